#pragma once

#include <cstdint>
#include <string>

#include "tavelabi/BasePlugin.h"

namespace halvor::kelo::test {

// The smallest concrete plug-in: BasePlugin leaves the lifecycle to its subclass.
class TestPlugin : public tavelabi::BasePlugin {
 public:
  using tavelabi::BasePlugin::BasePlugin;
  void init(const uint32_t& id, const std::string&, const std::string&) override { setId(id); }
  void shutdown() override {}
  bool produce(const tavelabi::TimePoint&) override { return true; }
  void consume(const tavelabi::TimePoint&) override {}
};

}  // namespace halvor::kelo::test
