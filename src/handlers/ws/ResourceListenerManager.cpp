#include "kelo/handlers/ws/ResourceListenerManager.h"

namespace halvor::kelo {

void ResourceListenerManager::initAndStart(const Json::Value& /*config*/) {}

void ResourceListenerManager::shutdown() {}

void ResourceListenerManager::setLoggerId(const std::string& id) { loggerId = id; }

}  // namespace halvor::kelo
