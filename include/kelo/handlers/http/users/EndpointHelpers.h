#pragma once

#include <memory>
#include <string>

#include "halvor/protobuf/Monitoring.pb.h"
#include "halvor/protobuf/Users.pb.h"
#include "kelo/web/HttpRequest.h"
#include "tavelabi/IPluginInfo.h"
#include "tavelabi/ITavel.h"

namespace halvor::kelo {

// What more than one handler needs to show a user: the whole User message read from the host,
// and a stored meter preference filled again with the live meters.
class EndpointHelpers {
 public:
  EndpointHelpers() = delete;

  // The user at `path`, with roles, activities, validations and preferences. Every read made
  // here, the nested meter reads included, carries "byPassSessionActivityTimerUpdate" = byPass:
  // true when a poll shows the user, false when a person just logged in. The reply never holds
  // the user's password or GUID.
  static std::shared_ptr<protobuf::User> getCurrentUserInfo(const web::HttpRequestPtr& req,
                                                            tavelabi::ITavel* tavel,
                                                            tavelabi::IPluginInfo* info,
                                                            std::string sessionId, std::string path,
                                                            bool byPass);

  // The tree of paths in `json` ("values" -> "meterGroups" -> "meters", each with "path") with
  // every collection, group and meter read again from the host, in the order of the JSON.
  // Text that does not parse throws tavelabi::JsonParserException.
  static std::shared_ptr<protobuf::MeterCollectionList> generateMeterCollectionListFromJsonString(
      const web::HttpRequestPtr& req, tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
      std::string sessionId, std::string json, bool byPass);
};

}  // namespace halvor::kelo
