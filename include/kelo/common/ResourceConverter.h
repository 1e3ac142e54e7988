#pragma once

#include "halvor/protobuf/Resource.pb.h"
#include "tavelabi/Resource.h"
#include "tavelabi/ResourceValue.h"

namespace halvor::kelo {

// Converts between the host's resources and their message form, in both directions. Arguments
// are taken by value: resources are small, and a nested value is copied on its way down.
//
// Two conversions are deliberately not inverse to each other: a message of type
// SERIALIZED_RESOURCE_VALUE reaches the host as the bytes of the whole message, and a host byte
// array becomes a message whose bytesValue is set but whose type is not, so that it comes back
// from a client as an UNSPECIFIED_RESOURCE_TYPE value.
//
// A message on its way to the host that nests deeper than ResourceDepth::kMaxDepth is refused
// with std::length_error before anything of it is converted: stored, it could never be printed
// back as JSON.
class ResourceConverter {
 public:
  ResourceConverter() = delete;

  static tavelabi::ResourceValue toTavelAbiResourceValue(protobuf::ResourceValue message);
  static protobuf::ResourceValue toHalvorPbResourceValue(tavelabi::ResourceValue value);
  static protobuf::Resource toHalvorPbResource(tavelabi::Resource resource);
  static tavelabi::Resource toTavelAbiResource(protobuf::Resource message);

 private:
  // toTavelAbiResourceValue once the depth is known to be printable.
  static tavelabi::ResourceValue toTavelAbiValue(protobuf::ResourceValue message);
};

}  // namespace halvor::kelo
