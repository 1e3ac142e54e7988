#pragma once

#include <cstdint>
#include <string>

#include "tavelabi/BasePlugin.h"

namespace halvor::tavelabi::test {

// The smallest concrete plug-in: BasePlugin leaves the lifecycle to its subclass.
class TestPlugin : public BasePlugin {
 public:
  using BasePlugin::BasePlugin;
  void init(const uint32_t& id, const std::string&, const std::string&) override { setId(id); }
  void shutdown() override {}
  bool produce(const TimePoint&) override { return true; }
  void consume(const TimePoint&) override {}
};

}  // namespace halvor::tavelabi::test
