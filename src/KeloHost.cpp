#include "kelo/KeloHost.h"

#include <stdexcept>

#include "kelo/web/HttpAppFramework.h"

namespace halvor::kelo {

// Looked up on every call rather than kept: the lookup is a scan of the few plug-ins, and a
// kept pointer would outlive a plug-in that a reconfigured application made anew.
WebKeloInterface& KeloHost::plugin() {
  WebKeloInterface* plugin = web::app().getPlugin<WebKeloInterface>();
  if (plugin == nullptr) {
    throw std::logic_error("The web configuration lists no WebKeloInterface plug-in");
  }
  return *plugin;
}

std::string KeloHost::loggerId() {
  WebKeloInterface* plugin = web::app().getPlugin<WebKeloInterface>();
  return plugin != nullptr && plugin->pluginInfo != nullptr ? plugin->pluginInfo->getLoggerId()
                                                            : std::string();
}

}  // namespace halvor::kelo
