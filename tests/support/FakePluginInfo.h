#pragma once

#include <cstdint>
#include <string>

#include "tavelabi/IPluginInfo.h"

namespace halvor::kelo::test {

// The plug-in's identity as handlers hand it to the host.
class FakePluginInfo : public tavelabi::IPluginInfo {
 public:
  static constexpr const char* kSessionId = "plugin-session";

  std::string getName() const override { return "Kelo"; }
  std::string getVersion() const override { return "0"; }
  uint32_t getId() const override { return 1; }
  std::string getLoggerId() const override { return "Kelo1"; }
  std::string getSessionId() const override { return kSessionId; }
};

}  // namespace halvor::kelo::test
