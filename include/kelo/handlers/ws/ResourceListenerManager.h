#pragma once

#include <string>

#include "kelo/web/Plugin.h"

namespace halvor::kelo {

// Owns the host listeners behind the WebSocket subscriptions.
class ResourceListenerManager : public web::Plugin<ResourceListenerManager> {
 public:
  void initAndStart(const Json::Value& config) override;
  void shutdown() override;

  // The plug-in's logger, set once by the beginning advice.
  void setLoggerId(const std::string& id);

 private:
  std::string loggerId;
};

}  // namespace halvor::kelo
