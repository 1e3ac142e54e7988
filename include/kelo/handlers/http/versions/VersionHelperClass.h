#pragma once

#include <memory>
#include <string>

#include "halvor/protobuf/Versions.pb.h"
#include "kelo/web/HttpRequest.h"
#include "kelo/web/HttpResponse.h"
#include "tavelabi/IPluginInfo.h"
#include "tavelabi/ITavel.h"
#include "tavelabi/Resource.h"

namespace halvor::kelo {

// The versions of the installed software under the host's "/versions", and the skyRun chain's
// remote support, whose commands the host may take long to answer.
class VersionHelperClass {
 public:
  VersionHelperClass() = delete;

  static constexpr const char* kPrefix = "/versions";

  // The version at `path`: its "value", named by the path without the leading "/versions".
  static std::shared_ptr<protobuf::Version> readVersion(const web::HttpRequestPtr& req,
                                                        tavelabi::ITavel* tavel,
                                                        tavelabi::IPluginInfo* info,
                                                        const std::string& sessionId,
                                                        const std::string& path);
  // The five keys of the support state, each when its field is set.
  static tavelabi::Resource remoteSupportResource(const protobuf::SkyRunRemoteSupport& support);
  // Sends `command` with `values`. An answer holding "errorMessage" gives status 500 with that
  // text as body, and the result is false; otherwise the answer is kept in `answer`.
  static bool remoteSupportCommand(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                   tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                   const std::string& sessionId, const std::string& command,
                                   const tavelabi::Resource& values, tavelabi::Resource& answer);
};

}  // namespace halvor::kelo
