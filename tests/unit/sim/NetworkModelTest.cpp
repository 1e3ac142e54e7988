#include <gtest/gtest.h>

#include <chrono>
#include <stdexcept>
#include <string>

#include "SimTestSupport.h"
#include "sim/models/ModelRegistry.h"
#include "sim/models/NetworkModel.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::sim {
namespace {

using kelo::test::HostWithUsers;
using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceAction;
using tavelabi::ResourceValue;
using tavelabi::TimePoint;
using namespace std::chrono_literals;

class NetworkModelTest : public ::testing::Test {
 protected:
  NetworkModelTest() {
    ModelRegistry::install(host, {[] { return std::unique_ptr<Model>(new NetworkModel()); }});
  }

  Resource run(CCRUD verb, const std::string& path, const Resource& resource) {
    ResourceAction action(verb, path, resource, nullptr, "");
    return host.processInternalAction(action);
  }

  std::string text(const std::string& path) {
    return host.peek(path)->values.at("value").getStringValue();
  }

  static Resource platformWrite() {
    Resource command;
    for (const char* key :
         {"dns1", "dns2", "dgateway", "lan1ip", "lan1netmask", "lan2ip", "lan2netmask"}) {
      command.values[key] = ResourceValue("10.9.9.9");
    }
    command.values["lan1mode"] = ResourceValue("static");
    command.values["lan2mode"] = ResourceValue("dhcp");
    command.values["lan1mac"] = ResourceValue("ff:ff");
    command.values["lan2mac"] = ResourceValue("");
    command.values["lan1up"] = ResourceValue(true);
    command.values["lan2up"] = ResourceValue(true);
    command.values["lan1connected"] = ResourceValue("false");
    command.values["lan2connected"] = ResourceValue(true);
    return command;
  }

  SimTavel host{HostWithUsers::quietOptions()};
};

TEST_F(NetworkModelTest, AnAddressWrittenAsSetValueIsTakenByTheNextTick) {
  run(CCRUD::Update, "/network/ipAddress", Resource("set_value", ResourceValue("10.1.2.3")));
  EXPECT_EQ(text("/network/ipAddress"), "192.168.1.20");
  host.tickModels(TimePoint(1s));
  EXPECT_EQ(text("/network/ipAddress"), "10.1.2.3");
}

TEST_F(NetworkModelTest, AValueOfTheWrongFormIsWithdrawn) {
  run(CCRUD::Update, "/network/gateway", Resource("set_value", ResourceValue("not.an.address")));
  run(CCRUD::Update, "/network/dhcpEnabled", Resource("set_value", ResourceValue("yes")));
  host.tickModels(TimePoint(1s));
  EXPECT_EQ(text("/network/gateway"), "192.168.1.1");
  EXPECT_EQ(host.peek("/network/gateway")->values.at("set_value").getStringValue(), "192.168.1.1");
  EXPECT_FALSE(host.peek("/network/dhcpEnabled")->values.at("value").getBoolValue());
}

TEST_F(NetworkModelTest, ThePlatformTakesItsWritableKeysAndShowsThemAfterTheFetch) {
  run(CCRUD::Command, "/qCore/setip", platformWrite());
  EXPECT_EQ(text("/network/qCore/lan1/ip"), "10.0.0.20");  // not before the fetch
  run(CCRUD::Command, "/qCore/getip", Resource());
  EXPECT_EQ(text("/network/qCore/lan1/ip"), "10.9.9.9");
  EXPECT_EQ(text("/network/qCore/gateway"), "10.9.9.9");
  EXPECT_TRUE(host.peek("/network/qCore/lan2/up")->values.at("value").getBoolValue());
  // What only the platform knows stays as it was.
  EXPECT_EQ(text("/network/qCore/lan1/mac"), "00:1a:2b:3c:4d:60");
  EXPECT_TRUE(host.peek("/network/qCore/lan1/connected")->values.at("value").getBoolValue());
}

TEST_F(NetworkModelTest, ThePlatformRefusesBadValuesAndMissingKeys) {
  Resource command = platformWrite();
  command.values["lan1ip"] = ResourceValue("300.1.1.1");
  EXPECT_THROW(run(CCRUD::Command, "/qCore/setip", command), std::invalid_argument);
  command = platformWrite();
  command.values["lan2mode"] = ResourceValue("auto");
  EXPECT_THROW(run(CCRUD::Command, "/qCore/setip", command), std::invalid_argument);
  command = platformWrite();
  command.values.erase("lan2connected");
  EXPECT_THROW(run(CCRUD::Command, "/qCore/setip", command), std::out_of_range);
  run(CCRUD::Command, "/qCore/getip", Resource());
  EXPECT_EQ(text("/network/qCore/lan1/ip"), "10.0.0.20");
}

}  // namespace
}  // namespace halvor::sim
