#include "kelo/handlers/http/generic/CommandHandler.h"

#include "kelo/handlers/http/generic/GenericResourceHelpers.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void CommandHandler::processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                        tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                        std::string sessionId) {
  const std::string path = QueryParameters::required(req, "path");
  const tavelabi::Resource resource = GenericResourceHelpers::bodyResource(req);
  KeloResourceAction action(tavelabi::CCRUD::Command, path, resource, info, sessionId, req);
  // No content type of its own: clients of commands read the body as they please.
  resp->setBody(JsonReplies::resourceJson(tavel->processResourceAction(action)));
  resp->setStatusCode(web::k200OK);
}

}  // namespace halvor::kelo
