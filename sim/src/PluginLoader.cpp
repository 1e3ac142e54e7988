#include "sim/PluginLoader.h"

#include <dlfcn.h>

#include <utility>

namespace halvor::sim {

namespace {
std::string lastDlError() {
  const char* error = dlerror();
  return error == nullptr ? std::string("unknown error") : std::string(error);
}
}  // namespace

PluginLoader::PluginLoader(std::string path) : path_(std::move(path)) {
  dlerror();
  handle_ = dlopen(path_.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle_ == nullptr) {
    throw PluginLoadError("cannot load plug-in " + path_ + ": " + lastDlError());
  }
  create_ = reinterpret_cast<CreateEntryPoint>(lookUp(kCreateSymbol));
  produce_ = reinterpret_cast<ProduceEntryPoint>(lookUp(kProduceSymbol));
  consume_ = reinterpret_cast<ConsumeEntryPoint>(lookUp(kConsumeSymbol));
}

PluginLoader::~PluginLoader() { destroyPlugin(); }

void* PluginLoader::lookUp(const char* name) {
  dlerror();
  void* address = dlsym(handle_, name);
  if (address == nullptr) {
    throw PluginLoadError("plug-in " + path_ + " lacks the entry point " + name + ": " +
                          lastDlError());
  }
  return address;
}

void* PluginLoader::symbol(const char* name) const { return dlsym(handle_, name); }

tavelabi::BasePlugin& PluginLoader::createPlugin(tavelabi::ITavel* host) {
  plugin_ = create_(host);
  if (plugin_ == nullptr) throw PluginLoadError("plug-in " + path_ + ": create gave no object");
  return *plugin_;
}

bool PluginLoader::produce(const tavelabi::TimePoint& now) { return produce_(now); }

void PluginLoader::consume(const tavelabi::TimePoint& now) { consume_(now); }

void PluginLoader::destroyPlugin() {
  delete plugin_;
  plugin_ = nullptr;
}

}  // namespace halvor::sim
