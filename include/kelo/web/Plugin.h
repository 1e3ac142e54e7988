#pragma once

#include <json/value.h>

namespace halvor::kelo::web {

// A named object made and configured from the "plugins" section of the configuration file.
// initAndStart runs in HttpAppFramework::run(), before the beginning advices; shutdown runs when
// the application quits or is destroyed.
class PluginBase {
 public:
  virtual ~PluginBase() = default;
  // `config` is the entry's "config" object (null when absent).
  virtual void initAndStart(const Json::Value& config) = 0;
  virtual void shutdown() = 0;
};

// Base of a concrete plug-in type T (CRTP, so that getPlugin<T>() finds it by type).
template <class T>
class Plugin : public PluginBase {
 protected:
  Plugin() = default;
};

}  // namespace halvor::kelo::web
