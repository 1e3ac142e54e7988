#include "kelo/handlers/http/orban/GetOrbanActivePreset.h"

#include "kelo/handlers/http/orban/OrbanPresetHelpers.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetOrbanActivePreset::getActiveOrban(const web::HttpRequestPtr& req,
                                          web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                          tavelabi::IPluginInfo* info, std::string sessionId) {
  tavelabi::Resource active =
      HostReads::read(req, tavel, info, sessionId, OrbanPresetHelpers::activeNamePath());
  JsonReplies::reply(resp, *OrbanPresetHelpers::presetOf(active));
}

}  // namespace halvor::kelo
