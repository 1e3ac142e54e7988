#include "kelo/handlers/http/presets/PostPreset.h"

#include <utility>

#include "kelo/handlers/http/presets/PresetHandlerHelpers.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void PostPreset::postPreset(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                            tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                            std::string sessionId, web::ResponseCallback callback) {
  const auto query = QueryParameters::undecoded(req);
  const auto source = query.find("guid");
  if (source == query.end()) {
    throw RequestMissingQueryParameter("guid");
  }
  PresetHandlerHelpers::answerWithPreset(
      {req, resp, std::move(callback)}, tavel, [req, info, sessionId, guid = source->second] {
        return KeloResourceAction(tavelabi::CCRUD::Command, "/presets/create",
                                  tavelabi::Resource("guid", guid), info, sessionId, req);
      });
}

}  // namespace halvor::kelo
