#pragma once

#include <google/protobuf/message.h>
#include <google/protobuf/struct.pb.h>

#include <string>
#include <vector>

#include "tavelabi/ResourceValue.h"

namespace halvor::kelo {

// The two network configurations of the host: the controller's own under "/network", written key
// by key, and the platform's under "/network/qCore", written by one command.
class NetworkHelperClass {
 public:
  NetworkHelperClass() = delete;

  struct Entry {
    std::string path;
    std::string key;  // the message's field, and for the platform the command's key
  };

  static constexpr const char* kGetPlatformCommand = "/qCore/getip";
  static constexpr const char* kSetPlatformCommand = "/qCore/setip";

  // The controller's resources in the order they are read.
  static const std::vector<Entry>& controllerReads();
  // The controller's resources in the order they are written: not the MAC address nor the
  // running status, which only the host sets.
  static const std::vector<Entry>& controllerWrites();
  // The platform's resources, in the order they are read and their keys are written.
  static const std::vector<Entry>& platformEntries();

  // The connection state as the host reads it (a bool, or text), kept in the form it has.
  static google::protobuf::Value connectedFromHost(const tavelabi::ResourceValue& value);
  // The connection state as the command sends it: a bool as it is, text as it is, and an absent
  // value as empty text.
  static tavelabi::ResourceValue connectedToHost(const google::protobuf::Value& value);
  // The value of a StringValue or BoolValue, its default when the field is absent.
  static tavelabi::ResourceValue wrappedValue(const google::protobuf::Message& wrapper);
};

}  // namespace halvor::kelo
