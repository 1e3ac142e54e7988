// Any text as the JSON of a Resource, through the host form and back. Properties: what a client
// gets back prints as JSON that parses again to an equal message, and a second trip through
// the host changes nothing more (the first trips already dropped what the host can't hold).
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/util/field_comparator.h>
#include <google/protobuf/util/message_differencer.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "halvor/protobuf/Resource.pb.h"
#include "kelo/common/JsonOptions.h"
#include "kelo/common/ResourceConverter.h"

using halvor::kelo::JsonOptions;
using halvor::kelo::ResourceConverter;
using halvor::protobuf::Resource;

static Resource throughHost(const Resource& message) {
  return ResourceConverter::toHalvorPbResource(ResourceConverter::toTavelAbiResource(message));
}

// Wire form with map entries sorted by key, so that equal messages give equal bytes.
static std::string canonical(const Resource& message) {
  std::string bytes;
  google::protobuf::io::StringOutputStream stream(&bytes);
  google::protobuf::io::CodedOutputStream coded(&stream);
  coded.SetSerializationDeterministic(true);
  message.SerializeToCodedStream(&coded);
  coded.Trim();
  return bytes;
}

// Equal as a client and the host see it: numbers compare by value, so a -0 printed as "-0" and
// read back as 0 counts as the same (the JSON reader keeps the sign only for "-0.0"); NaN equals
// NaN; and an unset field equals one set to its default, since the converter reads them alike.
static bool equalValues(const Resource& left, const Resource& right) {
  google::protobuf::util::DefaultFieldComparator numbers;
  numbers.set_treat_nan_as_equal(true);
  google::protobuf::util::MessageDifferencer differencer;
  differencer.set_field_comparator(&numbers);
  differencer.set_message_field_comparison(google::protobuf::util::MessageDifferencer::EQUIVALENT);
  return differencer.Compare(left, right);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Resource parsed;
  const std::string text(reinterpret_cast<const char*>(data), size);
  if (!JsonOptions::fromJson(text, parsed).ok()) return 0;

  const Resource once = throughHost(parsed);
  Resource reparsed;
  if (!JsonOptions::fromJson(JsonOptions::toJson(once), reparsed).ok()) abort();
  if (!equalValues(reparsed, once)) {
    std::fprintf(stderr, "printed:  %s\nreparsed: %s\n", JsonOptions::toJson(once).c_str(),
                 JsonOptions::toJson(reparsed).c_str());
    abort();
  }

  const Resource twice = throughHost(throughHost(reparsed));
  if (canonical(throughHost(twice)) != canonical(twice)) abort();
  return 0;
}
