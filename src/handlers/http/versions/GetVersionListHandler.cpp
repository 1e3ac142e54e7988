#include "kelo/handlers/http/versions/GetVersionListHandler.h"

#include "kelo/handlers/http/versions/VersionHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetVersionListHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                               web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                               tavelabi::IPluginInfo* info, std::string sessionId) {
  const tavelabi::Resource glob("value", tavelabi::ResourceValue("/versions/**/*"));
  KeloResourceAction list(tavelabi::CCRUD::Command, "/resource/list", glob, info, sessionId, req);
  const tavelabi::Resource paths = tavel->processResourceAction(list);
  protobuf::VersionList versions;
  for (const tavelabi::ResourceValue& path : paths.values.at("value").getListValue()) {
    *versions.add_versions() =
        *VersionHelperClass::readVersion(req, tavel, info, sessionId, path.getStringValue());
  }
  JsonReplies::reply(resp, versions);
}

}  // namespace halvor::kelo
