#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"
#include "kelo/controllers/KeloHttpController.h"
#include "kelo/web/HttpAppFramework.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::kelo::test {

// The host's locality mark of an action (KeloResourceAction's member function of that name
// hides the field).
inline bool markedLocal(const tavelabi::ResourceAction& action) { return action.isLocalHost; }

// A simple-form route for tests and benchmarks: GET "/1/test/resource?path=<host path>" reads
// that path through a KeloResourceAction and answers {"local": <bool>, "value": "<text>"}.
// Without "path": RequestMissingQueryParameter. A query "fail=<what>" throws on purpose:
// "range" (std::out_of_range), "runtime" (std::runtime_error "asked to fail").
class GetTestResource : public web::KeloHttpController<GetTestResource> {
 public:
  KELO_ROUTES_BEGIN
  KELO_PATH("/test/resource", web::Get)
  KELO_ROUTES_END

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

// The path-parameter form: GET "/1/test/resources/{name}" reads "/test/<name>", PUT writes the
// body as its text "value" with an Update. Registered under the names
// "TestResourceHandler::getResourceWrapper" and "TestResourceHandler::putResourceWrapper".
class TestResourceHandler : public web::HttpController<TestResourceHandler> {
 public:
  KELO_ROUTES_BEGIN
  KELO_ROUTE(getResource, "/test/resources/{name}", web::Get)
  KELO_ROUTE(putResource, "/test/resources/{name}", web::Put)
  KELO_ROUTES_END

  virtual void getResource(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                           tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                           std::string sessionId, std::string name);
  virtual void putResource(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                           tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                           std::string sessionId, std::string name);
};

// Both of the above, on `application`.
void registerTestRoutes(web::HttpAppFramework& application);

}  // namespace halvor::kelo::test
