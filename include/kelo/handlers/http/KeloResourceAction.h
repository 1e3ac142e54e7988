#pragma once

#include <string>

#include "kelo/web/HttpRequest.h"
#include "tavelabi/IPluginInfo.h"
#include "tavelabi/Resource.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::kelo {

// A host action made on behalf of an HTTP or WebSocket request: it carries whether the client
// is on this machine, which the host alone uses. Every construction reads "/px3/localhostIp".
class KeloResourceAction : public tavelabi::ResourceAction {
 public:
  KeloResourceAction(const tavelabi::CCRUD& action, const std::string& path,
                     tavelabi::IPluginInfo* info, const std::string& sessionId,
                     const web::HttpRequestPtr& req);
  KeloResourceAction(const tavelabi::CCRUD& action, const std::string& path,
                     const tavelabi::Resource& resource, tavelabi::IPluginInfo* info,
                     const std::string& sessionId, const web::HttpRequestPtr& req);

  // Loopback peers are local; so is a peer whose address is listed in "/px3/localhostIp", read
  // under the plug-in's own session while the server runs.
  bool isLocalHost(const web::HttpRequestPtr& req);
};

}  // namespace halvor::kelo
