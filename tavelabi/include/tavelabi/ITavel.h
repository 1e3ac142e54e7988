#pragma once

#include <string>

#include "tavelabi/PluginStatus.h"
#include "tavelabi/Resource.h"
#include "tavelabi/ResourceAction.h"
#include "tavelabi/Session.h"

namespace halvor::tavelabi {

class IPluginInfo;
class IResourceListener;

// The host. A plug-in never owns it; every operation is safe from any thread.
class ITavel {
 public:
  virtual ~ITavel() = default;

  virtual void setPluginStatus(IPluginInfo* plugin, const PluginStatus& status) = 0;
  // Runs the action synchronously on the calling thread. The answer is returned and also
  // written into action.resource. Throws NonExistentSessionException, AuthorizationFailure,
  // NonExistentResourcePathException or another exception for each failure.
  virtual Resource processResourceAction(ResourceAction& action) = 0;
  // The host calls the listener for every action whose path matches its glob and whose verb is
  // in its set. The listener stays the plug-in's to delete.
  virtual void addResourceListener(IPluginInfo* plugin, IResourceListener* listener) = 0;
  // After return the host makes no further call to the listener.
  virtual void removeResourceListener(IPluginInfo* plugin, IResourceListener* listener) = 0;
  // A session for the plug-in itself, fit for Session::convertResourceToSession.
  virtual Resource createPluginSession(IPluginInfo* plugin) = 0;
  // Authenticates the plug-in's session; throws when the credentials do not match.
  virtual Resource loginPlugin(IPluginInfo* plugin, const std::string& username,
                               const std::string& password, Session session) = 0;
};

}  // namespace halvor::tavelabi
