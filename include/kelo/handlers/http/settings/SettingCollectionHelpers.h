#pragma once

#include <optional>
#include <string>

#include "halvor/protobuf/Settings.pb.h"
#include "kelo/web/HttpRequest.h"
#include "tavelabi/IPluginInfo.h"
#include "tavelabi/ITavel.h"
#include "tavelabi/Resource.h"

namespace halvor::kelo {

// The steps of the settings pages: a page described by the host under "/collection/<name>" is
// turned, with a fresh read of every setting it names, into a QuoSettingCollection.
class SettingCollectionHelpers {
 public:
  SettingCollectionHelpers() = delete;

  // "/collection/" + name, the name as it came.
  static std::string collectionPath(const std::string& name);
  // A guid is a path in one URL segment: "a-b-c" is "/a/b/c".
  static std::string settingPathOfGuid(const std::string& guid);

  // The whole page: one QuoSetting per entry of "settings" whose resource exists, in order.
  static protobuf::QuoSettingCollection readCollection(const web::HttpRequestPtr& req,
                                                       tavelabi::ITavel* tavel,
                                                       tavelabi::IPluginInfo* info,
                                                       const std::string& sessionId,
                                                       const std::string& name);

  // One entry of a page's "settings" list. Empty when the host does not know the setting's
  // resource; a missing mandatory key of the entry throws std::out_of_range "map::at".
  static std::optional<protobuf::QuoSetting> buildSetting(const web::HttpRequestPtr& req,
                                                          tavelabi::ITavel* tavel,
                                                          tavelabi::IPluginInfo* info,
                                                          const std::string& sessionId,
                                                          const tavelabi::ResourceValue& entry);

  // The lean form pushed over the WebSocket: the value alone, and the transition and error
  // state only as far as the host gives it.
  static protobuf::QuoSetting pushedSetting(const tavelabi::Resource& setting);
};

}  // namespace halvor::kelo
