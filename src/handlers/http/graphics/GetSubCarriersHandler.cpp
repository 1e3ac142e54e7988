#include "kelo/handlers/http/graphics/GetSubCarriersHandler.h"

#include "kelo/handlers/http/graphics/ConstellationHelperClass.h"
#include "kelo/handlers/http/graphics/GraphicsArena.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetSubCarriersHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                               web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                               tavelabi::IPluginInfo* info, std::string sessionId) {
  GraphicsArena arena;
  protobuf::SubCarrierGroupList& result = arena.make<protobuf::SubCarrierGroupList>();
  ConstellationHelperClass::getSubCarriers(req, tavel, info, sessionId, result, false);
  JsonReplies::reply(resp, result);
}

}  // namespace halvor::kelo
