#include "kelo/handlers/http/generic/PutResourceHandler.h"

#include "kelo/handlers/http/KeloResourceAction.h"
#include "kelo/handlers/http/generic/GenericResourceHelpers.h"

namespace halvor::kelo {

void PutResourceHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                            web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                            tavelabi::IPluginInfo* info, std::string sessionId) {
  const std::string path = GenericResourceHelpers::resourcePath(req);
  const tavelabi::Resource resource = GenericResourceHelpers::bodyResource(req);
  KeloResourceAction action(tavelabi::CCRUD::Update, path, resource, info, sessionId, req);
  std::string json = GenericResourceHelpers::answerJson(tavel->processResourceAction(action));
  resp->setContentTypeCode(web::CT_APPLICATION_JSON);
  resp->setBody(std::move(json));
  // The status stays at the response's default of 200.
}

}  // namespace halvor::kelo
