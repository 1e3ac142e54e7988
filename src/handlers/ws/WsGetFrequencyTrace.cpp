#include "kelo/handlers/ws/WsGetFrequencyTrace.h"

#include "kelo/KeloHost.h"
#include "kelo/handlers/http/graphics/FrequencyTraceHelperClass.h"
#include "kelo/handlers/ws/FrequencyTracePushes.h"
#include "kelo/handlers/ws/WsMessages.h"

namespace halvor::kelo {

void WsGetSpectrum::messageGenerator(const web::HttpRequestPtr& req,
                                     tavelabi::Resource& /*resource*/, std::string sessionId,
                                     std::string& message, const std::string& path) {
  WsMessages::checkSession(req, sessionId, path);
  WebKeloInterface& plugin = KeloHost::plugin();
  // Written from the decoded numbers: the bytes of the Spectrum message that getSpectrum makes,
  // shared with the other clients of the same change when their reads gave the same blocks.
  SpectrumHelperClass::Decoded spectrum;
  SpectrumHelperClass::readSpectrum(req, plugin.tavel, plugin.pluginInfo, sessionId,
                                    kBypassActivity, spectrum);
  FrequencyTracePushes::render(spectrum, message);
}

}  // namespace halvor::kelo
