#include "kelo/handlers/http/graphics/GetFrequencyTraceHandler.h"

#include "kelo/handlers/http/graphics/FrequencyTraceHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetSpectrumHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                            web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                            tavelabi::IPluginInfo* info, std::string sessionId) {
  // Printed from the decoded numbers: the text of the Spectrum message that getSpectrum makes.
  SpectrumHelperClass::Decoded spectrum;
  SpectrumHelperClass::readSpectrum(req, tavel, info, sessionId, false, spectrum);
  JsonReplies::replyJson(resp, SpectrumHelperClass::json(spectrum));
}

}  // namespace halvor::kelo
