#pragma once

#include <memory>
#include <string>

#include "halvor/protobuf/Monitoring.pb.h"
#include "kelo/common/MeterReadings.h"
#include "kelo/web/HttpRequest.h"
#include "tavelabi/IPluginInfo.h"
#include "tavelabi/ITavel.h"
#include "tavelabi/Resource.h"

namespace halvor::kelo {

// Reads the host's meter tree into messages: collections hold groups, groups hold meters, and
// each level lists the paths of the next in its "value". Every read made here carries
// "byPassSessionActivityTimerUpdate" = byPass (except the group reads of collectionHasMeters),
// so that a poll does not keep an idle session alive while a person's request does.
class MeterEndpointHelperClass {
 public:
  MeterEndpointHelperClass() = delete;

  // True when at least one group of the collection at `path` lists a meter. Every group is read.
  static bool collectionHasMeters(const web::HttpRequestPtr& req, tavelabi::ITavel* host,
                                  tavelabi::IPluginInfo* info, std::string path,
                                  std::string sessionId, bool byPass);
  // The meter at `path`. A meter that cannot be read is an Error line and a Meter with nothing
  // but its (empty) device, so that one missing meter does not fail its whole group.
  static std::shared_ptr<protobuf::Meter> getCurrentMeterInfo(const web::HttpRequestPtr& req,
                                                              tavelabi::ITavel* host,
                                                              tavelabi::IPluginInfo* info,
                                                              std::string path,
                                                              std::string sessionId, bool byPass);
  // The collection's own keys, without its groups; unreadable: a Warning line, an empty message.
  static std::shared_ptr<protobuf::MeterCollection> getCollectionMetaData(
      const web::HttpRequestPtr& req, tavelabi::ITavel* host, tavelabi::IPluginInfo* info,
      std::string path, std::string sessionId, bool byPass);
  // The group's own keys, without its meters; unreadable: a Warning line, an empty message.
  static std::shared_ptr<protobuf::MeterGroup> getMeterGroupMetaData(
      const web::HttpRequestPtr& req, tavelabi::ITavel* host, tavelabi::IPluginInfo* info,
      std::string path, std::string sessionId, bool byPass);
  // The group with each of its meters as it reads now. Host failures on the group pass through.
  static std::shared_ptr<protobuf::MeterGroup> getCurrentMeterGroupInfo(
      const web::HttpRequestPtr& req, tavelabi::ITavel* host, tavelabi::IPluginInfo* info,
      std::string path, std::string sessionId, bool byPass);
  // The collection with each of its groups as they read now.
  static std::shared_ptr<protobuf::MeterCollection> getCurrentMeterCollectionInfo(
      const web::HttpRequestPtr& req, tavelabi::ITavel* host, tavelabi::IPluginInfo* info,
      std::string path, std::string sessionId, bool byPass);

  // The group's and its meters' resources, read as getCurrentMeterGroupInfo reads them: the same
  // host calls in the same order, and the same failures at the same points (a meter or group
  // that its factory refuses is converted right after its reads, so that the factory's error
  // comes where it came when each was converted as it was read).
  static MeterGroupReading readMeterGroup(const web::HttpRequestPtr& req, tavelabi::ITavel* host,
                                          tavelabi::IPluginInfo* info, const std::string& path,
                                          const std::string& sessionId, bool byPass);
  // The same for a collection and its groups.
  static MeterCollectionReading readMeterCollection(const web::HttpRequestPtr& req,
                                                    tavelabi::ITavel* host,
                                                    tavelabi::IPluginInfo* info,
                                                    const std::string& path,
                                                    const std::string& sessionId, bool byPass);
  // The messages of what was read; no host call.
  static std::shared_ptr<protobuf::MeterGroup> toMessage(MeterGroupReading reading);
  static std::shared_ptr<protobuf::MeterCollection> toMessage(MeterCollectionReading reading);

  // A meter from a resource that is already at hand (a pushed change): no host call. The
  // reading keeps the host's type under the key "value" of the message's value.
  static std::shared_ptr<protobuf::Meter> convertMeterToHalvorPbMeter(tavelabi::Resource resource);

 private:
  static protobuf::Device deviceOf(const tavelabi::Resource& resource);
  // The meter at `path`, or an empty resource after an Error line when it cannot be read.
  static tavelabi::Resource readMeter(const web::HttpRequestPtr& req, tavelabi::ITavel* host,
                                      tavelabi::IPluginInfo* info, const std::string& path,
                                      const std::string& sessionId, bool byPass);
  // The resource at `path`, or an empty one after a Warning line "<warning><path>".
  static tavelabi::Resource readOrWarn(const web::HttpRequestPtr& req, tavelabi::ITavel* host,
                                       tavelabi::IPluginInfo* info, const std::string& path,
                                       const std::string& sessionId, bool byPass,
                                       const std::string& warning);
};

}  // namespace halvor::kelo
