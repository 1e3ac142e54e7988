#include "kelo/handlers/http/graphics/GetAudioModVectorsHandler.h"

#include "kelo/handlers/http/graphics/AudioModVectorsHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetAudioModVectorsHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                                   web::HttpResponsePtr& resp,
                                                   tavelabi::ITavel* tavel,
                                                   tavelabi::IPluginInfo* info,
                                                   std::string sessionId) {
  JsonReplies::reply(
      resp, *AudioModVectorsHelperClass::getAudioModVectors(req, tavel, info, sessionId, false));
}

}  // namespace halvor::kelo
