#include "kelo/handlers/http/presets/GetPresetLayout.h"

#include "kelo/handlers/http/presets/PresetHandlerHelpers.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetPresetLayout::processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                         tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                         std::string sessionId) {
  const tavelabi::Resource answer = HostReads::read(req, tavel, info, sessionId, "/presets/layout");
  JsonReplies::replyJson(resp, answer.values.at("value").getStringValue());
}

}  // namespace halvor::kelo
