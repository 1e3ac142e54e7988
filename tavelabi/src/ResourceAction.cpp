#include "tavelabi/ResourceAction.h"

namespace halvor::tavelabi {

ResourceAction::ResourceAction(const CCRUD& action, const std::string& path,
                               const Resource& resource, IPluginInfo* pluginInfo,
                               const std::string& sessionId)
    : action(action),
      resource(resource),
      pluginInfo(pluginInfo),
      path(path),
      sessionId(sessionId) {}

ResourceAction::ResourceAction(const CCRUD& action, const std::string& path,
                               IPluginInfo* pluginInfo, const std::string& sessionId)
    : ResourceAction(action, path, Resource(), pluginInfo, sessionId) {}

ResourceAction::~ResourceAction() = default;

}  // namespace halvor::tavelabi
