#pragma once

#include <cstdint>
#include <string>

namespace halvor::tavelabi {

// The identity a plug-in shows to the host. Every getter returns a copy and is safe from any
// thread.
class IPluginInfo {
 public:
  virtual ~IPluginInfo() = default;

  virtual std::string getName() const = 0;
  virtual std::string getVersion() const = 0;
  virtual uint32_t getId() const = 0;
  virtual std::string getLoggerId() const = 0;
  virtual std::string getSessionId() const = 0;
};

}  // namespace halvor::tavelabi
