#include "kelo/handlers/http/alarms/AlarmEndpointHelperClass.h"

#include "halvor/factories/MonitoringFactories.h"
#include "kelo/handlers/http/devices/DeviceEndpointHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

namespace {

using tavelabi::Resource;
using tavelabi::ResourceValue;

// The value under `key`, or nullptr when the resource has no such key: a missing key is no error.
const ResourceValue* lookUp(const Resource& resource, const std::string& key) {
  const auto found = resource.values.find(key);
  return found == resource.values.end() ? nullptr : &found->second;
}

void overrideIfPresent(protobuf::HalvorPbFactory2Alarm& factory, const Resource& resource,
                       const std::string& key, const std::string& field) {
  if (const ResourceValue* value = lookUp(resource, key)) factory.setOverride(field, *value);
}

// The device is always set, so that an alarm that names no device still has an empty one. With
// "deviceId" the name is read with at(): an id without a name fails the call with "map::at".
void setUpDevice(protobuf::HalvorPbFactory2Alarm& factory, const Resource& resource) {
  protobuf::Device& device = *factory.overrides().mutable_device();
  if (const ResourceValue* name = lookUp(resource, "deviceName")) {
    device.mutable_name()->set_value(name->getStringValue());
  }
  if (const ResourceValue* id = lookUp(resource, "deviceId")) {
    device.mutable_guid()->set_value(DeviceEndpointHelperClass::generateDeviceGuid(
        resource.values.at("deviceName").getStringValue(), id->getStringValue()));
  }
}

// The overrides from the alarm's keys. "value" decides whether the alarm is active, "active"
// only without it; "name" wins over "label".
void setUpFactory(protobuf::HalvorPbFactory2Alarm& factory, const Resource& resource) {
  overrideIfPresent(factory, resource, "label", "name");
  overrideIfPresent(factory, resource, "path", "path");
  overrideIfPresent(factory, resource, "description", "description");
  if (lookUp(resource, "value") != nullptr) {
    overrideIfPresent(factory, resource, "value", "active");
  } else {
    overrideIfPresent(factory, resource, "active", "active");
  }
  setUpDevice(factory, resource);
  // An unknown severity name gives the enumeration's 0, CRITICAL, without an error.
  overrideIfPresent(factory, resource, "severity", "severity");
  overrideIfPresent(factory, resource, "time", "time");
  overrideIfPresent(factory, resource, "name", "name");
}

}  // namespace

std::shared_ptr<protobuf::Alarm> AlarmEndpointHelperClass::getCurrentAlarmInfo(
    const web::HttpRequestPtr& req, tavelabi::ITavel* host, tavelabi::IPluginInfo* info,
    std::string sessionId, std::string path) {
  Resource alarm = HostReads::read(req, host, info, sessionId, path);
  protobuf::HalvorPbFactory2Alarm factory;
  setUpFactory(factory, alarm);
  // The factory's own reading of the resource agrees with the overrides: a key present in the
  // resource wins, which for "path", "active", "description" and "name" is the same value.
  return factory.build(&alarm);
}

std::shared_ptr<protobuf::AlarmList> AlarmEndpointHelperClass::generateAlarmList(
    const web::HttpRequestPtr& req, tavelabi::ITavel* host, tavelabi::IPluginInfo* info,
    std::string sessionId, Resource resource) {
  // A pushed change carries the list; otherwise (the first message, the REST answer) it is read.
  if (lookUp(resource, "value") == nullptr) {
    resource = HostReads::read(req, host, info, sessionId, kActiveAlarmsPath);
  }
  protobuf::HalvorPbFactory2AlarmList factory;
  const std::shared_ptr<protobuf::AlarmList> list = factory.build(nullptr);
  for (const ResourceValue& path : resource.values.at("value").getListValue()) {
    *list->add_alarms() = *getCurrentAlarmInfo(req, host, info, sessionId, path.getStringValue());
  }
  return list;
}

}  // namespace halvor::kelo
