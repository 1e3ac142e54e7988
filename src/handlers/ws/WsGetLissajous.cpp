#include "kelo/handlers/ws/WsGetLissajous.h"

#include "kelo/KeloHost.h"
#include "kelo/handlers/http/graphics/GraphicsArena.h"
#include "kelo/handlers/http/graphics/LissajousHelperClass.h"
#include "kelo/handlers/ws/WsMessages.h"

namespace halvor::kelo {

void WsGetLissajous::messageGenerator(const web::HttpRequestPtr& req,
                                      tavelabi::Resource& /*resource*/, std::string sessionId,
                                      std::string& message, const std::string& path) {
  WsMessages::checkSession(req, sessionId, path);
  WebKeloInterface& plugin = KeloHost::plugin();
  GraphicsArena arena;
  protobuf::Lissajous& result = arena.make<protobuf::Lissajous>();
  LissajousHelperClass::getLissajous(req, plugin.tavel, plugin.pluginInfo, sessionId, result,
                                     kBypassActivity);
  WsMessages::serialize(result, message);
}

}  // namespace halvor::kelo
