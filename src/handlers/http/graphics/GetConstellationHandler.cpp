#include "kelo/handlers/http/graphics/GetConstellationHandler.h"

#include "kelo/handlers/http/graphics/ConstellationHelperClass.h"
#include "kelo/handlers/http/graphics/GraphicsArena.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetConstellationHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                                 web::HttpResponsePtr& resp,
                                                 tavelabi::ITavel* tavel,
                                                 tavelabi::IPluginInfo* info,
                                                 std::string sessionId) {
  GraphicsArena arena;
  protobuf::Constellation& result = arena.make<protobuf::Constellation>();
  ConstellationHelperClass::getConstellation(req, tavel, info, sessionId, result, false);
  JsonReplies::reply(resp, result);
}

}  // namespace halvor::kelo
