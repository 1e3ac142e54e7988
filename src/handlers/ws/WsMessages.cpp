#include "kelo/handlers/ws/WsMessages.h"

#include "kelo/KeloHost.h"
#include "kelo/common/MessageBytes.h"
#include "kelo/handlers/toolkit/HostReads.h"

namespace halvor::kelo {

void WsMessages::checkSession(const web::HttpRequestPtr& req, const std::string& sessionId,
                              const std::string& path) {
  (void)readBypassingActivity(req, sessionId, path);
}

tavelabi::Resource WsMessages::readBypassingActivity(const web::HttpRequestPtr& req,
                                                     const std::string& sessionId,
                                                     const std::string& path) {
  WebKeloInterface& plugin = KeloHost::plugin();
  return HostReads::readBypassingActivity(req, plugin.tavel, plugin.pluginInfo, sessionId, path);
}

void WsMessages::serialize(const google::protobuf::MessageLite& message, std::string& out) {
  out = MessageBytes::of(message);
}

}  // namespace halvor::kelo
