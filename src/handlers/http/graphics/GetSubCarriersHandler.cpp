#include "kelo/handlers/http/graphics/GetSubCarriersHandler.h"

#include "kelo/handlers/http/graphics/ConstellationHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetSubCarriersHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                               web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                               tavelabi::IPluginInfo* info, std::string sessionId) {
  protobuf::SubCarrierGroupList result;
  ConstellationHelperClass::getSubCarriers(req, tavel, info, sessionId, result, false);
  JsonReplies::reply(resp, result);
}

}  // namespace halvor::kelo
