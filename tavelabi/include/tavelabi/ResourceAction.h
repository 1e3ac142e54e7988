#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "tavelabi/Resource.h"
#include "tavelabi/Types.h"

namespace halvor::tavelabi {

class IPluginInfo;

// The request record: a verb, a path, an optional resource, who asks and under which session.
// Built on the stack for one call and destroyed after it.
class ResourceAction {
 public:
  ResourceAction(const CCRUD& action, const std::string& path, const Resource& resource,
                 IPluginInfo* pluginInfo, const std::string& sessionId);
  ResourceAction(const CCRUD& action, const std::string& path, IPluginInfo* pluginInfo,
                 const std::string& sessionId);
  virtual ~ResourceAction();

  ResourceAction(const ResourceAction&) = default;
  ResourceAction& operator=(const ResourceAction&) = default;

  CCRUD action;
  Resource resource;
  IPluginInfo* pluginInfo;  // not owned
  bool isLocalHost = false;
  bool isInternal = false;  // the host's own mark; plug-ins leave it alone
  uint32_t hopCount = 0;
  std::string path;
  std::string sessionId;
  // The host's completion hooks; plug-ins leave them empty.
  std::function<void(const Resource&)> onSuccess;
  std::function<void(const std::exception_ptr&)> onFailure;
};

}  // namespace halvor::tavelabi
