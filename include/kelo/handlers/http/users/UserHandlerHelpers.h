#pragma once

#include <string>

#include "halvor/protobuf/Monitoring.pb.h"
#include "halvor/protobuf/Users.pb.h"
#include "tavelabi/IPluginInfo.h"
#include "tavelabi/ITavel.h"
#include "tavelabi/Resource.h"

namespace halvor::kelo {

// How a user is written to the host: a flat resource whose preferences are texts.
class UserHandlerHelpers {
 public:
  UserHandlerHelpers() = delete;

  // "/user/users/<username>" with the name put in as given.
  static std::string makeUserResourcePath(const std::string& username);

  // The keys of the fields that the message sets, so that an update changes only what a body
  // names; the default instance gives an empty resource. "meterPreference" is always written,
  // "localePreference" only for a locale other than 0, "dashboardLayoutPreference" only when set.
  static tavelabi::Resource buildTavelabiUserResource(const protobuf::User& user,
                                                      tavelabi::ITavel* tavel,
                                                      tavelabi::IPluginInfo* info,
                                                      std::string sessionId);

  // The preference as it is stored: the tree of paths alone, under "values", "meterGroups",
  // "meters" and "path", the keys that EndpointHelpers reads back. Readings, names, units and
  // limits are dropped. An empty list is "{}".
  static std::string generateSanitizedMeterPreferenceJsonString(
      const protobuf::MeterCollectionList& meters);
};

}  // namespace halvor::kelo
