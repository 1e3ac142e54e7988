// Any text as the JSON of a Resource, through the host form and back. Properties: what a client
// gets back prints as JSON that parses again to the same message, and a second trip through
// the host changes nothing more (the first trips already dropped what the host can't hold).
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>

#include <cstdint>
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

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Resource parsed;
  const std::string text(reinterpret_cast<const char*>(data), size);
  if (!JsonOptions::fromJson(text, parsed).ok()) return 0;

  const Resource once = throughHost(parsed);
  Resource reparsed;
  if (!JsonOptions::fromJson(JsonOptions::toJson(once), reparsed).ok()) abort();
  if (canonical(reparsed) != canonical(once)) abort();

  const Resource twice = throughHost(throughHost(reparsed));
  if (canonical(throughHost(twice)) != canonical(twice)) abort();
  return 0;
}
