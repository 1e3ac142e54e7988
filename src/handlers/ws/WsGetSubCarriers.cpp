#include "kelo/handlers/ws/WsGetSubCarriers.h"

#include "kelo/KeloHost.h"
#include "kelo/handlers/http/graphics/ConstellationHelperClass.h"
#include "kelo/handlers/http/graphics/GraphicsArena.h"
#include "kelo/handlers/ws/WsMessages.h"

namespace halvor::kelo {

void WsGetSubCarriers::messageGenerator(const web::HttpRequestPtr& req,
                                        tavelabi::Resource& /*resource*/, std::string sessionId,
                                        std::string& message, const std::string& path) {
  WsMessages::checkSession(req, sessionId, path);
  WebKeloInterface& plugin = KeloHost::plugin();
  GraphicsArena arena;
  protobuf::SubCarrierGroupList& result = arena.make<protobuf::SubCarrierGroupList>();
  ConstellationHelperClass::getSubCarriers(req, plugin.tavel, plugin.pluginInfo, sessionId, result,
                                           kBypassActivity);
  WsMessages::serialize(result, message);
}

}  // namespace halvor::kelo
