#include "kelo/handlers/http/presets/GetPresetList.h"

#include "kelo/handlers/http/presets/PresetHandlerHelpers.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetPresetList::processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                       tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                       std::string sessionId) {
  KeloResourceAction action(tavelabi::CCRUD::Command, "/presets/generateList", info, sessionId,
                            req);
  const tavelabi::Resource answer = tavel->processResourceAction(action);
  JsonReplies::reply(resp, PresetHandlerHelpers::presetListOf(answer.values.at("value")));
}

}  // namespace halvor::kelo
