#include "kelo/handlers/http/generic/PutResourceHandler.h"

#include "kelo/handlers/http/generic/GenericResourceHelpers.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void PutResourceHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                            web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                            tavelabi::IPluginInfo* info, std::string sessionId) {
  const std::string path = QueryParameters::required(req, "path");
  const tavelabi::Resource resource = GenericResourceHelpers::bodyResource(req);
  KeloResourceAction action(tavelabi::CCRUD::Update, path, resource, info, sessionId, req);
  JsonReplies::setJson(resp, JsonReplies::resourceJson(tavel->processResourceAction(action)));
  // The status stays at the response's default of 200.
}

}  // namespace halvor::kelo
