#include "kelo/handlers/ws/WsGetFrequencyTrace.h"

#include "kelo/KeloHost.h"
#include "kelo/handlers/http/graphics/GraphicsArena.h"
#include "kelo/handlers/http/graphics/FrequencyTraceHelperClass.h"
#include "kelo/handlers/ws/WsMessages.h"

namespace halvor::kelo {

void WsGetSpectrum::messageGenerator(const web::HttpRequestPtr& req,
                                     tavelabi::Resource& /*resource*/, std::string sessionId,
                                     std::string& message, const std::string& path) {
  WsMessages::checkSession(req, sessionId, path);
  WebKeloInterface& plugin = KeloHost::plugin();
  GraphicsArena arena;
  protobuf::Spectrum& result = arena.make<protobuf::Spectrum>();
  SpectrumHelperClass::getSpectrum(req, plugin.tavel, plugin.pluginInfo, sessionId, result,
                                   kBypassActivity);
  WsMessages::serialize(result, message);
}

}  // namespace halvor::kelo
