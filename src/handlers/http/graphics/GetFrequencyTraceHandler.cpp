#include "kelo/handlers/http/graphics/GetFrequencyTraceHandler.h"

#include "kelo/handlers/http/graphics/GraphicsArena.h"
#include "kelo/handlers/http/graphics/FrequencyTraceHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetSpectrumHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                            web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                            tavelabi::IPluginInfo* info, std::string sessionId) {
  GraphicsArena arena;
  protobuf::Spectrum& result = arena.make<protobuf::Spectrum>();
  SpectrumHelperClass::getSpectrum(req, tavel, info, sessionId, result, false);
  JsonReplies::reply(resp, result);
}

}  // namespace halvor::kelo
