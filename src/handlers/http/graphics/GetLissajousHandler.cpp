#include "kelo/handlers/http/graphics/GetLissajousHandler.h"

#include "kelo/handlers/http/graphics/GraphicsArena.h"
#include "kelo/handlers/http/graphics/LissajousHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetLissajousHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                             web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                             tavelabi::IPluginInfo* info, std::string sessionId) {
  GraphicsArena arena;
  protobuf::Lissajous& result = arena.make<protobuf::Lissajous>();
  LissajousHelperClass::getLissajous(req, tavel, info, sessionId, result, false);
  JsonReplies::reply(resp, result);
}

}  // namespace halvor::kelo
