#include "kelo/handlers/http/KeloResourceAction.h"

#include "kelo/HostPaths.h"
#include "kelo/KeloHost.h"
#include "kelo/web/HttpAppFramework.h"

namespace halvor::kelo {

KeloResourceAction::KeloResourceAction(const tavelabi::CCRUD& action, const std::string& path,
                                       tavelabi::IPluginInfo* info, const std::string& sessionId,
                                       const web::HttpRequestPtr& req)
    : tavelabi::ResourceAction(action, path, info, sessionId) {
  tavelabi::ResourceAction::isLocalHost = isLocalHost(req);
}

KeloResourceAction::KeloResourceAction(const tavelabi::CCRUD& action, const std::string& path,
                                       const tavelabi::Resource& resource,
                                       tavelabi::IPluginInfo* info, const std::string& sessionId,
                                       const web::HttpRequestPtr& req)
    : tavelabi::ResourceAction(action, path, resource, info, sessionId) {
  tavelabi::ResourceAction::isLocalHost = isLocalHost(req);
}

bool KeloResourceAction::isLocalHost(const web::HttpRequestPtr& req) {
  const web::InetAddress& peer = req->peerAddr();
  if (!web::app().isRunning()) {
    return peer.isLoopbackIp();
  }
  // Made for every host action: the path's text is made once, not twice per action.
  static const std::string kListPath(HostPaths::kLocalhostIp);
  tavelabi::ResourceAction read(tavelabi::CCRUD::Read, kListPath, pluginInfo,
                                pluginInfo->getSessionId());
  const tavelabi::Resource answer = KeloHost::tavel()->processResourceAction(read);

  const std::string& peerIp = peer.toIp();
  bool listed = false;
  for (const auto& ip : answer.values.at("value").getListValue()) {
    if (ip.getStringValue() == peerIp) {
      listed = true;
    }
  }
  return peer.isLoopbackIp() || listed;
}

}  // namespace halvor::kelo
