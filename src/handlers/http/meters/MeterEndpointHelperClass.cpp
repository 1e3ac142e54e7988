#include "kelo/handlers/http/meters/MeterEndpointHelperClass.h"

#include <boost/exception/diagnostic_information.hpp>
#include <utility>

#include "halvor/factories/MonitoringFactories.h"
#include "kelo/KeloLog.h"
#include "kelo/common/MeterResourceJsonWriter.h"
#include "kelo/common/ResourceConverter.h"
#include "kelo/handlers/toolkit/HostReads.h"

namespace halvor::kelo {

namespace {

// The meter's reading is converted once, by convertMeterToHalvorPbMeter itself; the factory
// takes it as given instead of converting "value" a second time.
const protobuf::FactoryRules& meterRules() {
  static const protobuf::FactoryRules rules = protobuf::FactoryRules().keepOverride("value");
  return rules;
}

}  // namespace

bool MeterEndpointHelperClass::collectionHasMeters(const web::HttpRequestPtr& req,
                                                   tavelabi::ITavel* host,
                                                   tavelabi::IPluginInfo* info, std::string path,
                                                   std::string sessionId, bool byPass) {
  const tavelabi::Resource collection =
      HostReads::readFlagged(req, host, info, sessionId, path, byPass);
  bool hasMeters = false;
  // Every group is read, also after the first one with meters.
  for (const tavelabi::ResourceValue& groupPath : collection.values.at("value").getListValue()) {
    const tavelabi::Resource group =
        HostReads::read(req, host, info, sessionId, groupPath.getStringValue());
    if (!group.values.at("value").getListValue().empty()) hasMeters = true;
  }
  return hasMeters;
}

std::shared_ptr<protobuf::Meter> MeterEndpointHelperClass::getCurrentMeterInfo(
    const web::HttpRequestPtr& req, tavelabi::ITavel* host, tavelabi::IPluginInfo* info,
    std::string path, std::string sessionId, bool byPass) {
  return convertMeterToHalvorPbMeter(readMeter(req, host, info, path, sessionId, byPass));
}

tavelabi::Resource MeterEndpointHelperClass::readMeter(const web::HttpRequestPtr& req,
                                                       tavelabi::ITavel* host,
                                                       tavelabi::IPluginInfo* info,
                                                       const std::string& path,
                                                       const std::string& sessionId, bool byPass) {
  try {
    return HostReads::readFlagged(req, host, info, sessionId, path, byPass);
  } catch (...) {
    KELO_LOG(ERROR, info->getLoggerId()) << boost::current_exception_diagnostic_information();
  }
  return tavelabi::Resource();
}

std::shared_ptr<protobuf::MeterCollection> MeterEndpointHelperClass::getCollectionMetaData(
    const web::HttpRequestPtr& req, tavelabi::ITavel* host, tavelabi::IPluginInfo* info,
    std::string path, std::string sessionId, bool byPass) {
  tavelabi::Resource collection =
      readOrWarn(req, host, info, path, sessionId, byPass, "Unable to find collection meta-data ");
  protobuf::HalvorPbFactory2MeterCollection factory;
  return factory.build(&collection);
}

std::shared_ptr<protobuf::MeterGroup> MeterEndpointHelperClass::getMeterGroupMetaData(
    const web::HttpRequestPtr& req, tavelabi::ITavel* host, tavelabi::IPluginInfo* info,
    std::string path, std::string sessionId, bool byPass) {
  tavelabi::Resource group =
      readOrWarn(req, host, info, path, sessionId, byPass, "Unable to find group meta-data ");
  protobuf::HalvorPbFactory2MeterGroup factory;
  return factory.build(&group);
}

std::shared_ptr<protobuf::MeterGroup> MeterEndpointHelperClass::getCurrentMeterGroupInfo(
    const web::HttpRequestPtr& req, tavelabi::ITavel* host, tavelabi::IPluginInfo* info,
    std::string path, std::string sessionId, bool byPass) {
  return toMessage(readMeterGroup(req, host, info, path, sessionId, byPass));
}

std::shared_ptr<protobuf::MeterCollection> MeterEndpointHelperClass::getCurrentMeterCollectionInfo(
    const web::HttpRequestPtr& req, tavelabi::ITavel* host, tavelabi::IPluginInfo* info,
    std::string path, std::string sessionId, bool byPass) {
  return toMessage(readMeterCollection(req, host, info, path, sessionId, byPass));
}

// A plain meter or group converts without an error (MeterResourceJsonWriter); any other is
// converted here, at once, and the message dropped: what matters is whether it throws.
MeterGroupReading MeterEndpointHelperClass::readMeterGroup(
    const web::HttpRequestPtr& req, tavelabi::ITavel* host, tavelabi::IPluginInfo* info,
    const std::string& path, const std::string& sessionId, bool byPass) {
  MeterGroupReading reading{HostReads::readFlagged(req, host, info, sessionId, path, byPass), {}};
  const tavelabi::ResourceValue::List& meterPaths = reading.group.values.at("value").getListValue();
  reading.meters.reserve(meterPaths.size());
  for (const tavelabi::ResourceValue& meterPath : meterPaths) {
    reading.meters.push_back(
        readMeter(req, host, info, meterPath.getStringValue(), sessionId, byPass));
    if (!MeterResourceJsonWriter::isPlainMeter(reading.meters.back())) {
      convertMeterToHalvorPbMeter(reading.meters.back());
    }
  }
  if (!MeterResourceJsonWriter::isPlainGroup(reading.group)) {
    protobuf::HalvorPbFactory2MeterGroup().build(&reading.group);
  }
  return reading;
}

MeterCollectionReading MeterEndpointHelperClass::readMeterCollection(
    const web::HttpRequestPtr& req, tavelabi::ITavel* host, tavelabi::IPluginInfo* info,
    const std::string& path, const std::string& sessionId, bool byPass) {
  MeterCollectionReading reading{HostReads::readFlagged(req, host, info, sessionId, path, byPass),
                                 {}};
  const tavelabi::ResourceValue::List& groupPaths =
      reading.collection.values.at("value").getListValue();
  reading.groups.reserve(groupPaths.size());
  for (const tavelabi::ResourceValue& groupPath : groupPaths) {
    reading.groups.push_back(
        readMeterGroup(req, host, info, groupPath.getStringValue(), sessionId, byPass));
  }
  if (!MeterResourceJsonWriter::isPlainCollection(reading.collection)) {
    protobuf::HalvorPbFactory2MeterCollection().build(&reading.collection);
  }
  return reading;
}

std::shared_ptr<protobuf::MeterGroup> MeterEndpointHelperClass::toMessage(
    MeterGroupReading reading) {
  protobuf::HalvorPbFactory2MeterGroup factory;
  for (tavelabi::Resource& meter : reading.meters) {
    *factory.overrides().add_meters() = std::move(*convertMeterToHalvorPbMeter(std::move(meter)));
  }
  return factory.release(&reading.group);
}

std::shared_ptr<protobuf::MeterCollection> MeterEndpointHelperClass::toMessage(
    MeterCollectionReading reading) {
  protobuf::HalvorPbFactory2MeterCollection factory;
  for (MeterGroupReading& group : reading.groups) {
    *factory.overrides().add_groups() = std::move(*toMessage(std::move(group)));
  }
  return factory.release(&reading.collection);
}

std::shared_ptr<protobuf::Meter> MeterEndpointHelperClass::convertMeterToHalvorPbMeter(
    tavelabi::Resource resource) {
  protobuf::HalvorPbFactory2Meter factory(meterRules());
  const auto reading = resource.values.find("value");
  if (reading != resource.values.end()) {
    (*factory.overrides().mutable_value()->mutable_values())["value"] =
        ResourceConverter::toHalvorPbResourceValue(reading->second);
  }
  *factory.overrides().mutable_device() = deviceOf(resource);
  // The factory builds once: its overrides (the reading, the device) move into the meter.
  return factory.release(&resource);
}

// The device's GUID is the device name directly followed by the id, with no separator: meters
// have always named their device so, unlike the device list.
protobuf::Device MeterEndpointHelperClass::deviceOf(const tavelabi::Resource& resource) {
  protobuf::Device device;
  if (resource.values.count("deviceName") != 0) {
    device.mutable_name()->set_value(resource.values.at("deviceName").getStringValue());
  }
  if (resource.values.count("deviceId") != 0) {
    device.mutable_guid()->set_value(resource.values.at("deviceName").getStringValue() +
                                     resource.values.at("deviceId").getStringValue());
  }
  return device;
}

tavelabi::Resource MeterEndpointHelperClass::readOrWarn(const web::HttpRequestPtr& req,
                                                        tavelabi::ITavel* host,
                                                        tavelabi::IPluginInfo* info,
                                                        const std::string& path,
                                                        const std::string& sessionId, bool byPass,
                                                        const std::string& warning) {
  try {
    return HostReads::readFlagged(req, host, info, sessionId, path, byPass);
  } catch (...) {
    KELO_LOG(WARNING, info->getLoggerId()) << warning << path;
    return tavelabi::Resource();
  }
}

}  // namespace halvor::kelo
