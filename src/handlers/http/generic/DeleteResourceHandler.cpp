#include "kelo/handlers/http/generic/DeleteResourceHandler.h"

#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void DeleteResourceHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                               web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                               tavelabi::IPluginInfo* info, std::string sessionId) {
  const std::string path = QueryParameters::required(req, "path");
  KeloResourceAction action(tavelabi::CCRUD::Delete, path, info, sessionId, req);
  // The removed resource the host answers with is of no use to the client.
  (void)tavel->processResourceAction(action);
  resp->setStatusCode(web::k200OK);
}

}  // namespace halvor::kelo
