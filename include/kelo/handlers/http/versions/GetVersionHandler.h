#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"

namespace halvor::kelo {

// GET "/1/api/versions/{layer1}" and its two deeper forms: one version, read from "/versions"
// followed by the path parameters joined with "/".
class GetVersionHandler : public web::HttpController<GetVersionHandler, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_ROUTE(getVersionLayer1, "/api/versions/{layer1}", web::Get)
  KELO_ROUTE(getVersionLayer2, "/api/versions/{layer1}/{layer2}", web::Get)
  KELO_ROUTE(getVersionLayer3, "/api/versions/{layer1}/{layer2}/{layer3}", web::Get)
  KELO_ROUTES_END

  virtual void getVersionLayer1(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                std::string sessionId, std::string layer1);
  virtual void getVersionLayer2(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                std::string sessionId, std::string layer1, std::string layer2);
  virtual void getVersionLayer3(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                std::string sessionId, std::string layer1, std::string layer2,
                                std::string layer3);

 private:
  static void replyWithVersion(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                               tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                               const std::string& sessionId, const std::string& path);
};

}  // namespace halvor::kelo
