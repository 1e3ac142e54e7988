#include "kelo/handlers/http/presets/GetActivePreset.h"

#include "kelo/handlers/http/presets/PresetHandlerHelpers.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetActivePreset::getActivePreset(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                      tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                      std::string sessionId) {
  const tavelabi::Resource answer =
      HostReads::read(req, tavel, info, sessionId, "/presets/active/details");
  JsonReplies::reply(resp, PresetHandlerHelpers::presetOf(answer));
}

}  // namespace halvor::kelo
