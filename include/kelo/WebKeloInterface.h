#pragma once

#include <functional>
#include <string>

#include "kelo/web/Plugin.h"
#include "tavelabi/IPluginInfo.h"
#include "tavelabi/ITavel.h"
#include "tavelabi/PluginStatus.h"

namespace halvor::kelo {

// Carries the host's pointers to the request handlers, which the web layer builds without
// arguments. Filled by the beginning advice on the server thread before the first request is
// served, and only read after that.
class WebKeloInterface : public web::Plugin<WebKeloInterface> {
 public:
  void initAndStart(const Json::Value& config) override;
  void shutdown() override;

  tavelabi::ITavel* tavel = nullptr;            // not owned
  tavelabi::IPluginInfo* pluginInfo = nullptr;  // not owned
  // GET /metrics: the bearer token of the configuration (empty: no metrics) and the plug-in's
  // status as it reports it to the host.
  std::string metricsToken;
  std::function<tavelabi::PluginStatus()> pluginStatus;
};

}  // namespace halvor::kelo
