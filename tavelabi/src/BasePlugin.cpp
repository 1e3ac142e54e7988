#include "tavelabi/BasePlugin.h"

namespace halvor::tavelabi {

BasePlugin::BasePlugin(ITavel* tavel) : tavel_(tavel) {}

BasePlugin::~BasePlugin() = default;

uint32_t BasePlugin::getId() const { return id_.load(std::memory_order_seq_cst); }

void BasePlugin::setId(const uint32_t& id) { id_.store(id, std::memory_order_seq_cst); }

std::string BasePlugin::getName() const {
  std::lock_guard<std::mutex> lock(nameMutex_);
  return name_;
}

void BasePlugin::setName(const std::string& name) {
  std::lock_guard<std::mutex> lock(nameMutex_);
  name_ = name;
}

std::string BasePlugin::getVersion() const {
  std::lock_guard<std::mutex> lock(versionMutex_);
  return version_;
}

void BasePlugin::setVersion(const std::string& version) {
  std::lock_guard<std::mutex> lock(versionMutex_);
  version_ = version;
}

std::string BasePlugin::getLoggerId() const {
  std::lock_guard<std::mutex> lock(loggerIdMutex_);
  return loggerId_;
}

void BasePlugin::setLoggerId(const std::string& loggerId) {
  std::lock_guard<std::mutex> lock(loggerIdMutex_);
  loggerId_ = loggerId;
}

std::string BasePlugin::getSessionId() const {
  std::lock_guard<std::mutex> lock(sessionIdMutex_);
  return sessionId_;
}

void BasePlugin::setSessionId(const std::string& sessionId) {
  std::lock_guard<std::mutex> lock(sessionIdMutex_);
  sessionId_ = sessionId;
}

ITavel* BasePlugin::getTavelInterface() const { return tavel_; }

}  // namespace halvor::tavelabi
