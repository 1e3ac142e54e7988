#include "kelo/handlers/http/network/NetworkHelperClass.h"

#include <google/protobuf/wrappers.pb.h>

namespace halvor::kelo {

const std::vector<NetworkHelperClass::Entry>& NetworkHelperClass::controllerReads() {
  static const std::vector<Entry> entries{{"/network/ipAddress", "ipAddress"},
                                          {"/network/dns1", "dns1"},
                                          {"/network/dns2", "dns2"},
                                          {"/network/subnetMask", "subnetMask"},
                                          {"/network/dhcpEnabled", "dhcpEnabled"},
                                          {"/network/macAddr", "macAddr"},
                                          {"/network/gateway", "gateway"},
                                          {"/network/runningStatus", "runningStatus"}};
  return entries;
}

const std::vector<NetworkHelperClass::Entry>& NetworkHelperClass::controllerWrites() {
  static const std::vector<Entry> entries{{"/network/ipAddress", "ipAddress"},
                                          {"/network/subnetMask", "subnetMask"},
                                          {"/network/dhcpEnabled", "dhcpEnabled"},
                                          {"/network/gateway", "gateway"},
                                          {"/network/dns1", "dns1"},
                                          {"/network/dns2", "dns2"}};
  return entries;
}

const std::vector<NetworkHelperClass::Entry>& NetworkHelperClass::platformEntries() {
  // The gateway's key is "dgateway" although its resource ends in "gateway".
  static const std::vector<Entry> entries{{"/network/qCore/dns1", "dns1"},
                                          {"/network/qCore/dns2", "dns2"},
                                          {"/network/qCore/gateway", "dgateway"},
                                          {"/network/qCore/lan1/mode", "lan1mode"},
                                          {"/network/qCore/lan1/mac", "lan1mac"},
                                          {"/network/qCore/lan1/ip", "lan1ip"},
                                          {"/network/qCore/lan1/netmask", "lan1netmask"},
                                          {"/network/qCore/lan1/up", "lan1up"},
                                          {"/network/qCore/lan1/connected", "lan1connected"},
                                          {"/network/qCore/lan2/mode", "lan2mode"},
                                          {"/network/qCore/lan2/mac", "lan2mac"},
                                          {"/network/qCore/lan2/ip", "lan2ip"},
                                          {"/network/qCore/lan2/netmask", "lan2netmask"},
                                          {"/network/qCore/lan2/up", "lan2up"},
                                          {"/network/qCore/lan2/connected", "lan2connected"}};
  return entries;
}

google::protobuf::Value NetworkHelperClass::connectedFromHost(
    const tavelabi::ResourceValue& value) {
  google::protobuf::Value connected;
  if (value.getType() == tavelabi::ResourceValueType::STRING) {
    connected.set_string_value(value.getStringValue());
  } else {
    // Anything else must be the bool the host normally gives; its getter refuses other types.
    connected.set_bool_value(value.getBoolValue());
  }
  return connected;
}

tavelabi::ResourceValue NetworkHelperClass::connectedToHost(const google::protobuf::Value& value) {
  switch (value.kind_case()) {
    case google::protobuf::Value::kBoolValue:
      return tavelabi::ResourceValue(value.bool_value());
    case google::protobuf::Value::kStringValue:
      return tavelabi::ResourceValue(value.string_value());
    default:
      return tavelabi::ResourceValue(std::string());
  }
}

tavelabi::ResourceValue NetworkHelperClass::wrappedValue(const google::protobuf::Message& wrapper) {
  if (wrapper.GetDescriptor() == google::protobuf::BoolValue::descriptor()) {
    return tavelabi::ResourceValue(
        static_cast<const google::protobuf::BoolValue&>(wrapper).value());
  }
  return tavelabi::ResourceValue(
      static_cast<const google::protobuf::StringValue&>(wrapper).value());
}

}  // namespace halvor::kelo
