#pragma once

#include <stdexcept>
#include <string>

#include "sim/EntryPoints.h"
#include "tavelabi/BasePlugin.h"
#include "tavelabi/ITavel.h"

namespace halvor::sim {

// A plug-in library that cannot be used; what() is one line naming the file and the reason.
class PluginLoadError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A plug-in library opened with dlopen and its three entry points. The library is never
// closed: threads of the plug-in may still run code from it until the process ends.
class PluginLoader {
 public:
  // Opens the library and looks up create, produce and consume; PluginLoadError on failure.
  explicit PluginLoader(std::string path);
  // Deletes the plug-in object if destroyPlugin() was not called.
  ~PluginLoader();

  PluginLoader(const PluginLoader&) = delete;
  PluginLoader& operator=(const PluginLoader&) = delete;

  // Calls create(host); PluginLoadError when it gives no object.
  tavelabi::BasePlugin& createPlugin(tavelabi::ITavel* host);
  bool produce(const tavelabi::TimePoint& now);
  void consume(const tavelabi::TimePoint& now);
  // Deletes the plug-in object through its virtual destructor.
  void destroyPlugin();

  tavelabi::BasePlugin* plugin() const { return plugin_; }
  const std::string& path() const { return path_; }
  // Another symbol of the library, or null.
  void* symbol(const char* name) const;

 private:
  void* lookUp(const char* name);

  std::string path_;
  void* handle_ = nullptr;
  CreateEntryPoint create_ = nullptr;
  ProduceEntryPoint produce_ = nullptr;
  ConsumeEntryPoint consume_ = nullptr;
  tavelabi::BasePlugin* plugin_ = nullptr;
};

}  // namespace halvor::sim
