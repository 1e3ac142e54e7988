#include "kelo/handlers/http/generic/GetResourceHandler.h"

#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetResourceHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                            web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                            tavelabi::IPluginInfo* info, std::string sessionId) {
  const std::string path = QueryParameters::required(req, "path");
  JsonReplies::replyWithResource(resp, HostReads::read(req, tavel, info, sessionId, path));
}

}  // namespace halvor::kelo
