#include "kelo/handlers/http/presets/DeletePreset.h"

#include <optional>
#include <utility>

#include "kelo/handlers/http/presets/PresetHandlerHelpers.h"
#include "kelo/handlers/toolkit/BackgroundConfirmation.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void DeletePreset::deletePreset(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                std::string sessionId, web::ResponseCallback callback,
                                std::string presetId) {
  KeloResourceAction first(tavelabi::CCRUD::Command, "/presets/delete",
                           tavelabi::Resource("guid", presetId), info, sessionId, req);
  const tavelabi::Resource answer = tavel->processResourceAction(first);
  if (answer.values.count("errorOccurred") != 0) {
    resp->setStatusCode(web::k500InternalServerError);
    resp->setBody(answer.values.at("errorMessage").getStringValue());
    return;
  }
  web::HttpResponsePtr reply = resp;
  BackgroundConfirmation::startWithVerdict(
      {req, resp, std::move(callback)}, kPollPeriod,
      [req, reply, tavel, info, sessionId, presetId]() -> std::optional<int> {
        KeloResourceAction poll(tavelabi::CCRUD::Command, "/presets/delete",
                                tavelabi::Resource("checkProgress", true), info, sessionId, req);
        const tavelabi::Resource progress = tavel->processResourceAction(poll);
        if (progress.values.count("actionCompleted") != 0) {
          reply->setBody("");
          return web::k200OK;
        }
        if (progress.values.count("errorOccurred") != 0) {
          reply->setBody(progress.values.at("errorMessage").getStringValue());
          return web::k500InternalServerError;
        }
        return std::nullopt;
      });
}

}  // namespace halvor::kelo
