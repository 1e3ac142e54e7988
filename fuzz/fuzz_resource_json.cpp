// Any text as the JSON of a Resource, through the host form and back. Properties: what is nested
// too deeply to print is refused on its way to the host; the rest, as a client gets it back,
// prints as JSON that parses again to an equal message, and a second trip through the host
// changes nothing more (the first trips already dropped what the host can't hold).
#include <google/protobuf/util/field_comparator.h>
#include <google/protobuf/util/message_differencer.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>

#include "halvor/protobuf/Resource.pb.h"
#include "kelo/common/JsonOptions.h"
#include "kelo/common/MessageBytes.h"
#include "kelo/common/ResourceConverter.h"
#include "kelo/common/ResourceDepth.h"

using halvor::kelo::JsonOptions;
using halvor::kelo::MessageBytes;
using halvor::kelo::ResourceConverter;
using halvor::kelo::ResourceDepth;
using halvor::protobuf::Resource;

static Resource throughHost(const Resource& message) {
  return ResourceConverter::toHalvorPbResource(ResourceConverter::toTavelAbiResource(message));
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
  if (ResourceDepth::of(parsed) > ResourceDepth::kMaxDepth) {
    try {
      throughHost(parsed);
    } catch (const std::length_error&) {
      return 0;
    }
    abort();
  }

  const Resource once = throughHost(parsed);
  Resource reparsed;
  if (!JsonOptions::fromJson(JsonOptions::toJson(once), reparsed).ok()) abort();
  if (!equalValues(reparsed, once)) {
    std::fprintf(stderr, "printed:  %s\nreparsed: %s\n", JsonOptions::toJson(once).c_str(),
                 JsonOptions::toJson(reparsed).c_str());
    abort();
  }

  const Resource twice = throughHost(throughHost(reparsed));
  if (MessageBytes::of(throughHost(twice)) != MessageBytes::of(twice)) abort();
  return 0;
}
