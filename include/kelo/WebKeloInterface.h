#pragma once

#include "kelo/web/Plugin.h"
#include "tavelabi/IPluginInfo.h"
#include "tavelabi/ITavel.h"

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
};

}  // namespace halvor::kelo
