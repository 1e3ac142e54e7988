#include "kelo/handlers/ws/WsGetSetting.h"

#include "halvor/protobuf/Settings.pb.h"
#include "kelo/controllers/KeloWsFrame.h"
#include "kelo/handlers/http/settings/SettingCollectionHelpers.h"
#include "kelo/handlers/toolkit/QueryParameters.h"
#include "kelo/handlers/ws/WsMessages.h"

namespace halvor::kelo {

void WsGetSetting::initialSetupAndMessage(const web::HttpRequestPtr& req,
                                          const web::WebSocketConnectionPtr& conn,
                                          std::string sessionId) {
  const std::string id = QueryParameters::required(req, "id");
  if (id.empty()) {
    return;
  }
  const std::string path = SettingCollectionHelpers::settingPathOfGuid(id);
  tavelabi::Resource unused;
  std::string message;
  messageGenerator(req, unused, sessionId, message, path);
  conn->send(message, web::WebSocketMessageType::Binary);
  KeloWsFrame::subscribe(req, conn, &WsGetSetting::messageGenerator, path, sessionId);
}

void WsGetSetting::messageGenerator(const web::HttpRequestPtr& req,
                                    tavelabi::Resource& /*resource*/, std::string sessionId,
                                    std::string& message, const std::string& path) {
  // Read afresh: the pushed resource may hold only the keys that changed.
  const tavelabi::Resource setting = WsMessages::readBypassingActivity(req, sessionId, path);
  WsMessages::serialize(SettingCollectionHelpers::pushedSetting(setting), message);
}

}  // namespace halvor::kelo
