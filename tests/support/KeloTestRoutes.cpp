#include "support/KeloTestRoutes.h"

#include <stdexcept>

#include "kelo/Exceptions.h"
#include "kelo/handlers/http/KeloResourceAction.h"
#include "tavelabi/Resource.h"

namespace halvor::kelo::test {

namespace {

std::string answerJson(bool local, const std::string& value) {
  return std::string("{\"local\":") + (local ? "true" : "false") + ",\"value\":\"" + value + "\"}";
}

}  // namespace

void GetTestResource::processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                         tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                         std::string sessionId) {
  const std::string fail = req->getParameter("fail");
  if (fail == "range") {
    throw std::out_of_range("map::at");
  }
  if (fail == "runtime") {
    throw std::runtime_error("asked to fail");
  }
  const std::string path = req->getParameter("path");
  if (path.empty()) {
    throw RequestMissingQueryParameter("path");
  }
  KeloResourceAction action(tavelabi::CCRUD::Read, path, info, sessionId, req);
  const tavelabi::Resource answer = tavel->processResourceAction(action);
  resp->setContentTypeCode(web::CT_APPLICATION_JSON);
  resp->setBody(answerJson(markedLocal(action), answer.values.at("value").getStringValue()));
  resp->setStatusCode(200);
}

void TestResourceHandler::getResourceWrapper(const web::HttpRequestPtr& req,
                                             web::ResponseCallback&& callback, std::string name) {
  frame(
      req, callback,
      [&](web::HttpResponsePtr& resp, tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
          const std::string& sessionId) { getResource(req, resp, tavel, info, sessionId, name); });
}

void TestResourceHandler::putResourceWrapper(const web::HttpRequestPtr& req,
                                             web::ResponseCallback&& callback, std::string name) {
  frame(
      req, callback,
      [&](web::HttpResponsePtr& resp, tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
          const std::string& sessionId) { putResource(req, resp, tavel, info, sessionId, name); });
}

void TestResourceHandler::getResource(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                      tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                      std::string sessionId, std::string name) {
  KeloResourceAction action(tavelabi::CCRUD::Read, "/test/" + name, info, sessionId, req);
  const tavelabi::Resource answer = tavel->processResourceAction(action);
  resp->setContentTypeCode(web::CT_APPLICATION_JSON);
  resp->setBody(answerJson(markedLocal(action), answer.values.at("value").getStringValue()));
  resp->setStatusCode(200);
}

void TestResourceHandler::putResource(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                      tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                      std::string sessionId, std::string name) {
  // A body set before the host call stays in a 440 or 403 reply.
  resp->setBody("partial");
  KeloResourceAction action(tavelabi::CCRUD::Update, "/test/" + name,
                            tavelabi::Resource(tavelabi::ResourceValue(std::string(req->body()))),
                            info, sessionId, req);
  tavel->processResourceAction(action);
  resp->setBody("");
  resp->setStatusCode(204);
}

void TestResourceHandler::registerRoutes(web::HttpAppFramework& application) {
  registerWrapper(application, "/test/resources/{name}", &TestResourceHandler::getResourceWrapper,
                  {web::Get}, "TestResourceHandler::getResourceWrapper");
  registerWrapper(application, "/test/resources/{name}", &TestResourceHandler::putResourceWrapper,
                  {web::Put}, "TestResourceHandler::putResourceWrapper");
}

void registerTestRoutes(web::HttpAppFramework& application) {
  GetTestResource::registerRoute(application, "/test/resource", {web::Get}, "Test resource");
  TestResourceHandler::registerRoutes(application);
}

}  // namespace halvor::kelo::test
