#include "kelo/handlers/http/versions/GetVersionHandler.h"

#include "kelo/handlers/http/versions/VersionHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetVersionHandler::getVersionLayer1(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                         tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                         std::string sessionId, std::string layer1) {
  replyWithVersion(req, resp, tavel, info, sessionId,
                   std::string(VersionHelperClass::kPrefix) + "/" + layer1);
}

void GetVersionHandler::getVersionLayer2(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                         tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                         std::string sessionId, std::string layer1,
                                         std::string layer2) {
  replyWithVersion(req, resp, tavel, info, sessionId,
                   std::string(VersionHelperClass::kPrefix) + "/" + layer1 + "/" + layer2);
}

void GetVersionHandler::getVersionLayer3(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                         tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                         std::string sessionId, std::string layer1,
                                         std::string layer2, std::string layer3) {
  replyWithVersion(
      req, resp, tavel, info, sessionId,
      std::string(VersionHelperClass::kPrefix) + "/" + layer1 + "/" + layer2 + "/" + layer3);
}

void GetVersionHandler::replyWithVersion(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                         tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                         const std::string& sessionId, const std::string& path) {
  JsonReplies::reply(resp, *VersionHelperClass::readVersion(req, tavel, info, sessionId, path));
}

}  // namespace halvor::kelo
