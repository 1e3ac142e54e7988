#include "kelo/handlers/http/generic/GetResourceHandler.h"

#include "kelo/handlers/http/KeloResourceAction.h"
#include "kelo/handlers/http/generic/GenericResourceHelpers.h"

namespace halvor::kelo {

void GetResourceHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                            web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                            tavelabi::IPluginInfo* info, std::string sessionId) {
  const std::string path = GenericResourceHelpers::resourcePath(req);
  KeloResourceAction action(tavelabi::CCRUD::Read, path, info, sessionId, req);
  std::string json = GenericResourceHelpers::answerJson(tavel->processResourceAction(action));
  resp->setContentTypeCode(web::CT_APPLICATION_JSON);
  resp->setBody(std::move(json));
  resp->setStatusCode(web::k200OK);
}

}  // namespace halvor::kelo
