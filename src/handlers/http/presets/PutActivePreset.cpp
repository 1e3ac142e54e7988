#include "kelo/handlers/http/presets/PutActivePreset.h"

#include <json/reader.h>
#include <json/value.h>

#include <utility>

#include "kelo/handlers/http/presets/PresetHandlerHelpers.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"
#include "tavelabi/Exceptions.h"

namespace halvor::kelo {

void PutActivePreset::putActivePreset(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                      tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                      std::string sessionId, web::ResponseCallback callback) {
  Json::Value root;
  Json::Reader reader;
  if (!reader.parse(std::string(req->body()), root)) {
    throw tavelabi::BadlyFormedJsonStringException("invalid broadcast preset");
  }
  // A body without "guid" sends an empty one: the host decides.
  const std::string guid = root["guid"].asString();
  PresetHandlerHelpers::answerWithPreset(
      {req, resp, std::move(callback)}, tavel, [req, info, sessionId, guid] {
        return KeloResourceAction(tavelabi::CCRUD::Command, "/presets/active/change",
                                  tavelabi::Resource("guid", guid), info, sessionId, req);
      });
}

}  // namespace halvor::kelo
