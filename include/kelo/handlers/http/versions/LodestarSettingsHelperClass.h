#pragma once

#include <memory>
#include <string>

#include "halvor/protobuf/Versions.pb.h"
#include "kelo/web/HttpRequest.h"
#include "tavelabi/IPluginInfo.h"
#include "tavelabi/ITavel.h"
#include "tavelabi/Resource.h"

namespace halvor::kelo {

// The remote service registration under the host's "/lodestar/service".
class LodestarSettingsHelperClass {
 public:
  LodestarSettingsHelperClass() = delete;

  static constexpr const char* kQuery = "/lodestar/service/query";
  static constexpr const char* kUpdate = "/lodestar/service/update";

  // Read of the registration; each of its four keys is optional and leaves its field unset.
  static std::shared_ptr<protobuf::LodestarSettings> getLodestarSettings(
      const web::HttpRequestPtr& req, tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
      const std::string& sessionId);
  // The four keys, in order, each when its field is set.
  static tavelabi::Resource settingsResource(const protobuf::LodestarSettings& settings);
};

}  // namespace halvor::kelo
