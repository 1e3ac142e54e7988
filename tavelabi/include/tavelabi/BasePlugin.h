#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>

#include "tavelabi/IPluginInfo.h"
#include "tavelabi/Types.h"

namespace halvor::tavelabi {

class ITavel;

// What the host drives: start, stop and the tavel interface.
class IPlugin {
 public:
  virtual ~IPlugin() = default;
  virtual ITavel* getTavelInterface() const = 0;
  virtual void init(const uint32_t& id, const std::string& logConfigFile,
                    const std::string& configFile) = 0;
  virtual void shutdown() = 0;
};

// The host's main loop calls produce and then, when it returned true, consume.
class IProducerConsumer {
 public:
  virtual ~IProducerConsumer() = default;
  virtual bool produce(const TimePoint& now) = 0;
  virtual void consume(const TimePoint& now) = 0;
};

// Base of a plug-in's main class. Each text field has a mutex of its own, so that the getters
// and setters are safe from any thread; the id is an atomic.
class BasePlugin : public IPlugin, public IPluginInfo, public IProducerConsumer {
 public:
  explicit BasePlugin(ITavel* tavel);
  ~BasePlugin() override;

  BasePlugin(const BasePlugin&) = delete;
  BasePlugin& operator=(const BasePlugin&) = delete;

  uint32_t getId() const override;
  virtual void setId(const uint32_t& id);
  std::string getName() const override;
  virtual void setName(const std::string& name);
  std::string getVersion() const override;
  virtual void setVersion(const std::string& version);
  std::string getLoggerId() const override;
  virtual void setLoggerId(const std::string& loggerId);
  std::string getSessionId() const override;
  virtual void setSessionId(const std::string& sessionId);

  ITavel* getTavelInterface() const override;

 private:
  ITavel* tavel_;
  std::atomic<uint32_t> id_{0};
  mutable std::mutex nameMutex_;
  std::string name_;
  mutable std::mutex versionMutex_;
  std::string version_;
  mutable std::mutex loggerIdMutex_;
  std::string loggerId_;
  mutable std::mutex sessionIdMutex_;
  std::string sessionId_;
};

}  // namespace halvor::tavelabi
