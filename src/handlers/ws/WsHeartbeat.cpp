#include "kelo/handlers/ws/WsHeartbeat.h"

#include "kelo/HostPaths.h"
#include "kelo/KeloHost.h"
#include "kelo/KeloLog.h"
#include "tavelabi/ITavel.h"
#include "tavelabi/ResourceAction.h"
#include "tavelabi/TermTint.h"

namespace halvor::kelo {

void WsHeartbeat::initialSetupAndMessage(const web::HttpRequestPtr& /*req*/,
                                         const web::WebSocketConnectionPtr& conn,
                                         std::string /*sessionId*/) {
  const std::string ip = conn->peerAddr().toIp();
  KELO_LOG(INFO, KeloHost::loggerId())
      << TermTint::bright_color(36) << "start heartbeat with " << ip << TermTint::color(0);
  extendHeartbeatCount(ip);
  conn->send("pong", web::WebSocketMessageType::Text);
}

void WsHeartbeat::handleNewMessage(const web::WebSocketConnectionPtr& conn,
                                   std::string&& /*message*/,
                                   const web::WebSocketMessageType& /*type*/) {
  const std::string ip = conn->peerAddr().toIp();
  extendHeartbeatCount(ip);
  conn->send("pong", web::WebSocketMessageType::Text);
}

void WsHeartbeat::extendHeartbeatCount(std::string ip) {
  KELO_LOG(DEBUG, KeloHost::loggerId())
      << "received ping from client " << ip << " extend heartbeat count";
  tavelabi::ITavel* tavel = KeloHost::tavel();
  tavelabi::IPluginInfo* info = KeloHost::pluginInfo();
  tavelabi::ResourceAction read(tavelabi::CCRUD::Read, HostPaths::kConnectivities, info,
                                info->getSessionId());
  const tavelabi::Resource answer = tavel->processResourceAction(read);
  tavelabi::ResourceValue::Map connectivities = answer.values.at("value").getMapValue();

  connectivities[ip] = tavelabi::ResourceValue(static_cast<int>(kHeartbeatCount));

  tavelabi::ResourceAction update(tavelabi::CCRUD::Update, HostPaths::kConnectivities,
                                  tavelabi::Resource(tavelabi::ResourceValue(connectivities)), info,
                                  info->getSessionId());
  tavel->processResourceAction(update);
}

}  // namespace halvor::kelo
