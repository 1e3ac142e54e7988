#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "SimTestSupport.h"
#include "sim/models/DeviceModel.h"
#include "sim/models/ModelRegistry.h"

namespace halvor::sim {
namespace {

using kelo::test::HostWithUsers;
using tavelabi::Resource;
using tavelabi::ResourceValue;
using Texts = std::vector<std::string>;

std::unique_ptr<Model> makeDevices() { return std::make_unique<DeviceModel>(); }

Texts textsAt(SimTavel& host, const std::string& path) {
  Texts texts;
  const Resource stored = host.peek(path).value();
  for (const ResourceValue& element : stored.values.at("value").getListValue()) {
    texts.push_back(element.getStringValue());
  }
  return texts;
}

TEST(DeviceModelTest, ListsEveryDeviceNameAndTheDevicesOfEachName) {
  SimTavel host(HostWithUsers::quietOptions());
  ModelRegistry::install(host, {makeDevices});
  EXPECT_EQ(textsAt(host, "/device/list"),
            (Texts{"/device/exciter", "/device/amplifier", "/device/powersupply", "/device/fan"}));
  EXPECT_EQ(textsAt(host, "/device/exciter/list"),
            (Texts{"/device/exciter/1", "/device/exciter/2"}));
  EXPECT_EQ(textsAt(host, "/device/amplifier/list"),
            (Texts{"/device/amplifier/1", "/device/amplifier/2", "/device/amplifier/3",
                   "/device/amplifier/4"}));
  EXPECT_EQ(textsAt(host, "/device/powersupply/list"),
            (Texts{"/device/powersupply/1", "/device/powersupply/2"}));
  EXPECT_EQ(textsAt(host, "/device/fan/list"),
            (Texts{"/device/fan/1", "/device/fan/2", "/device/fan/3", "/device/fan/4"}));
  EXPECT_EQ(host.listPaths("/device/**").size(), 5u);
}

TEST(DeviceModelTest, ReadableByEveryRole) {
  HostWithUsers h;
  ModelRegistry::install(*h.host, {makeDevices});
  const Resource answer = h.run(tavelabi::CCRUD::Read, "/device/fan/list", h.viewerSession);
  EXPECT_EQ(answer.values.at("value").getListValue().size(), 4u);
}

TEST(DeviceModelTest, AListSeededByAFixtureIsKept) {
  SimTavel host(HostWithUsers::quietOptions());
  Fixture fixture;
  fixture.resources.emplace_back("/device/list", Resource(ResourceValue(Texts{"/device/fan"})));
  host.applyFixture(fixture);
  ModelRegistry::install(host, {makeDevices});
  EXPECT_EQ(textsAt(host, "/device/list"), (Texts{"/device/fan"}));
  EXPECT_EQ(textsAt(host, "/device/fan/list").size(), 4u);
}

TEST(DeviceModelTest, TheDemoSetIsTheOneEveryModelNamesItsDevicesFrom) {
  const std::vector<DemoDevice>& devices = DeviceModel::devices();
  ASSERT_EQ(devices.size(), 4u);
  EXPECT_EQ(devices[1].name, "amplifier");
  EXPECT_EQ(devices[1].ids, (Texts{"1", "2", "3", "4"}));
  EXPECT_EQ(DeviceModel::typeListPath("fan"), "/device/fan/list");
}

}  // namespace
}  // namespace halvor::sim
