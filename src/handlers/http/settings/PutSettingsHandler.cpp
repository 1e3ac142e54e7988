#include "kelo/handlers/http/settings/PutSettingsHandler.h"

#include <stdexcept>

#include "halvor/protobuf/Settings.pb.h"
#include "kelo/common/JsonOptions.h"
#include "kelo/common/ResourceConverter.h"
#include "kelo/handlers/http/settings/SettingCollectionHelpers.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void PutSettingsHandler::putSetting(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                    tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                    std::string sessionId, std::string guid) {
  const std::string path = SettingCollectionHelpers::settingPathOfGuid(guid);
  // A body that does not parse leaves the message as far as the parse got; only "set_value"
  // is needed of it.
  protobuf::QuoSetting body;
  (void)JsonOptions::fromJson(std::string(req->body()), body);
  const auto& values = body.settingresource().resource().values();
  const auto setValue = values.find("set_value");
  if (setValue == values.end()) {
    throw std::out_of_range("CHECK failed: it != end(): key not found: set_value");
  }
  tavelabi::Resource write("set_value",
                           ResourceConverter::toTavelAbiResourceValue(setValue->second));
  KeloResourceAction action(tavelabi::CCRUD::Update, path, write, info, sessionId, req);
  JsonReplies::replyWithResource(resp, tavel->processResourceAction(action));
}

}  // namespace halvor::kelo
