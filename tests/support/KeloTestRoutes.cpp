#include "support/KeloTestRoutes.h"

#include <stdexcept>

#include "kelo/controllers/FamilyRoutes.h"
#include "kelo/handlers/http/KeloResourceAction.h"
#include "kelo/handlers/toolkit/QueryParameters.h"
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
  const std::string fail = QueryParameters::optional(req, "fail").value_or("");
  if (fail == "range") {
    throw std::out_of_range("map::at");
  }
  if (fail == "runtime") {
    throw std::runtime_error("asked to fail");
  }
  const std::string path = QueryParameters::required(req, "path");
  KeloResourceAction action(tavelabi::CCRUD::Read, path, info, sessionId, req);
  const tavelabi::Resource answer = tavel->processResourceAction(action);
  resp->setContentTypeCode(web::CT_APPLICATION_JSON);
  resp->setBody(answerJson(markedLocal(action), answer.values.at("value").getStringValue()));
  resp->setStatusCode(200);
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

void registerTestRoutes(web::HttpAppFramework& application) {
  FamilyRoutes::add<GetTestResource, TestResourceHandler>(application);
}

}  // namespace halvor::kelo::test
