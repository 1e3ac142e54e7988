#include <gtest/gtest.h>
#include <json/value.h>

#include <algorithm>
#include <chrono>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "SimTestSupport.h"
#include "sim/models/MeterModel.h"
#include "sim/models/ModelRegistry.h"
#include "tavelabi/Exceptions.h"
#include "tavelabi/GlobMatcher.h"

namespace halvor::sim {
namespace {

using namespace std::chrono_literals;
using kelo::test::HostWithUsers;
using kelo::test::RecordingListener;
using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;
using tavelabi::ResourceValueType;
using tavelabi::TimePoint;

std::unique_ptr<Model> makeMeters() { return std::make_unique<MeterModel>(); }

std::vector<std::string> textsOf(const Resource& resource) {
  std::vector<std::string> texts;
  for (const ResourceValue& element : resource.values.at("value").getListValue()) {
    texts.push_back(element.getStringValue());
  }
  return texts;
}

bool startsWith(const std::string& text, const std::string& prefix) {
  return text.compare(0, prefix.size(), prefix) == 0;
}

std::string folderOf(const std::string& listPath) {
  return listPath.substr(0, listPath.size() - std::string("list").size());
}

Fixture sectionFixture(const Json::Value& section) {
  Fixture fixture;
  fixture.sections.emplace_back("meters", section);
  return fixture;
}

class MeterModelTest : public ::testing::Test {
 protected:
  MeterModelTest() { ModelRegistry::install(host, {makeMeters}); }

  // Every meter the tree lists, read back from the host by walking the lists.
  std::vector<std::string> listedMeters() {
    std::vector<std::string> meters;
    for (const std::string& collection : textsOf(*host.peek(MeterModel::kCollectionListPath))) {
      for (const std::string& group : textsOf(*host.peek(collection))) {
        for (const std::string& meter : textsOf(*host.peek(group))) meters.push_back(meter);
      }
    }
    return meters;
  }
  std::size_t updatesAfter(RecordingListener& listener) {
    host.waitForListeners();
    return listener.calls().size();
  }

  SimTavel host{HostWithUsers::quietOptions()};
};

TEST_F(MeterModelTest, CollectionsAreListedAndAreThePathsEndingInListBelowMeters) {
  const std::vector<std::string> collections = textsOf(*host.peek(MeterModel::kCollectionListPath));
  EXPECT_GE(collections.size(), 6u);
  EXPECT_EQ(std::set<std::string>(collections.begin(), collections.end()), [&] {
    const auto listed = host.listPaths("/meters/**/list");
    return std::set<std::string>(listed.begin(), listed.end());
  }());
  for (const std::string& collection : collections) {
    const Resource resource = *host.peek(collection);
    EXPECT_EQ(resource.values.at("path").getStringValue(), collection);
    EXPECT_FALSE(resource.values.at("label").getStringValue().empty());
    for (const std::string& group : textsOf(resource)) {
      EXPECT_TRUE(startsWith(group, folderOf(collection))) << group;
      EXPECT_FALSE(tavelabi::GlobMatcher::globMatch("**/list", group.c_str())) << group;
      const Resource groupResource = *host.peek(group);
      EXPECT_EQ(groupResource.values.at("path").getStringValue(), group);
      EXPECT_EQ(groupResource.values.at("guid").getStringValue().size(), 36u);
      for (const std::string& meter : textsOf(groupResource)) {
        EXPECT_TRUE(startsWith(meter, group + "/")) << meter;
      }
    }
  }
}

TEST_F(MeterModelTest, AboutAHundredMetersOfEveryTypeSomeDeeperThanOneLevel) {
  const std::vector<std::string> meters = listedMeters();
  EXPECT_GE(meters.size(), 90u);
  EXPECT_LE(meters.size(), 120u);
  std::set<ResourceValueType> types;
  std::size_t deep = 0;
  for (const std::string& path : meters) {
    const std::optional<Resource> meter = host.peek(path);
    ASSERT_TRUE(meter.has_value()) << path;
    types.insert(meter->values.at("value").getType());
    if (std::count(path.begin(), path.end(), '/') > 4) ++deep;
  }
  EXPECT_EQ(types,
            (std::set<ResourceValueType>{ResourceValueType::DOUBLE, ResourceValueType::INT32,
                                         ResourceValueType::BOOL, ResourceValueType::STRING}));
  EXPECT_GE(deep, 8u);
}

TEST_F(MeterModelTest, EveryMeterCarriesItsDisplayKeysAndAReadingInRange) {
  for (const std::string& path : listedMeters()) {
    const Resource meter = *host.peek(path);
    EXPECT_EQ(meter.values.at("path").getStringValue(), path);
    EXPECT_FALSE(meter.values.at("label").getStringValue().empty()) << path;
    EXPECT_EQ(meter.values.at("guid").getStringValue().size(), 36u) << path;
    EXPECT_EQ(meter.values.at("units").getType(), ResourceValueType::STRING) << path;
    const ResourceValue& reading = meter.values.at("value");
    if (reading.getType() == ResourceValueType::DOUBLE ||
        reading.getType() == ResourceValueType::INT32) {
      const double value = reading.getType() == ResourceValueType::DOUBLE ? reading.getDoubleValue()
                                                                          : reading.getIntValue();
      EXPECT_LE(meter.values.at("min").getDoubleValue(), value) << path;
      EXPECT_GE(meter.values.at("max").getDoubleValue(), value) << path;
      EXPECT_EQ(meter.values.at("digitsToDisplay").getType(), ResourceValueType::INT32) << path;
    }
  }
}

TEST_F(MeterModelTest, MetersNameOnlyTheDemosDevices) {
  const std::map<std::string, std::set<std::string>> devices = {{"exciter", {"1", "2"}},
                                                                {"amplifier", {"1", "2", "3", "4"}},
                                                                {"powersupply", {"1", "2"}},
                                                                {"fan", {"1", "2", "3", "4"}}};
  std::set<std::string> named;
  std::size_t withoutId = 0;
  for (const std::string& path : listedMeters()) {
    const Resource meter = *host.peek(path);
    const auto name = meter.values.find("deviceName");
    const auto id = meter.values.find("deviceId");
    if (name == meter.values.end()) {
      EXPECT_EQ(id, meter.values.end()) << path;
      continue;
    }
    ASSERT_EQ(devices.count(name->second.getStringValue()), 1u) << path;
    named.insert(name->second.getStringValue());
    if (id == meter.values.end()) {
      ++withoutId;
      continue;
    }
    EXPECT_EQ(devices.at(name->second.getStringValue()).count(id->second.getStringValue()), 1u)
        << path;
  }
  EXPECT_EQ(named.size(), devices.size());
  EXPECT_GT(withoutId, 0u);
}

TEST_F(MeterModelTest, OneCollectionListsOnlyGroupsWithoutMeters) {
  std::size_t emptyCollections = 0;
  for (const std::string& collection : textsOf(*host.peek(MeterModel::kCollectionListPath))) {
    bool anyMeter = false;
    for (const std::string& group : textsOf(*host.peek(collection))) {
      if (!textsOf(*host.peek(group)).empty()) anyMeter = true;
    }
    if (!anyMeter) ++emptyCollections;
  }
  EXPECT_EQ(emptyCollections, 1u);
}

TEST_F(MeterModelTest, EveryMeterIsUpdatedOncePerIntervalOfTwoHundredMilliseconds) {
  host.waitForListeners();  // the Creates of the installation are not counted
  RecordingListener listener("/meters/**", {CCRUD::Create, CCRUD::Update});
  host.addResourceListener(nullptr, &listener);
  const std::size_t meters = listedMeters().size();
  const TimePoint start(10s);
  host.tickModels(start);
  host.tickModels(start + 150ms);
  EXPECT_EQ(updatesAfter(listener), 0u);
  host.tickModels(start + 200ms);
  EXPECT_EQ(updatesAfter(listener), meters);
  host.tickModels(start + 300ms);
  EXPECT_EQ(updatesAfter(listener), meters);
  host.tickModels(start + 400ms);
  EXPECT_EQ(updatesAfter(listener), 2 * meters);
  std::set<std::string> updated;
  for (const auto& call : listener.calls()) {
    EXPECT_EQ(call.verb, CCRUD::Update);
    updated.insert(call.path);
    // The pushed resource is the whole meter, not the new reading alone.
    EXPECT_EQ(call.resource.values.count("path"), 1u) << call.path;
  }
  const std::vector<std::string> listed = listedMeters();
  EXPECT_EQ(updated, std::set<std::string>(listed.begin(), listed.end()));
  host.removeResourceListener(nullptr, &listener);
}

TEST_F(MeterModelTest, NumbersDriftWithinTheirRangeAndStatusesStayAsTheyAre) {
  const std::string power = "/meters/rf/output/forwardPower";
  const std::string mode = "/meters/rf/output/operatingMode";
  const double first = host.peek(power)->values.at("value").getDoubleValue();
  std::set<double> seen;
  TimePoint now(1s);
  for (int i = 0; i < 30; ++i, now += 200ms) {
    host.tickModels(now);
    const Resource meter = *host.peek(power);
    const double value = meter.values.at("value").getDoubleValue();
    EXPECT_GE(value, meter.values.at("min").getDoubleValue());
    EXPECT_LE(value, meter.values.at("max").getDoubleValue());
    EXPECT_LT(std::abs(value - first), 0.1 * meter.values.at("max").getDoubleValue());
    seen.insert(value);
  }
  EXPECT_GT(seen.size(), 20u);
  EXPECT_EQ(host.peek(mode)->values.at("value").getStringValue(), "Normal");
}

TEST_F(MeterModelTest, AStoredReadingIsWhereTheDriftStarts) {
  const std::string power = "/meters/amplifiers/amplifier1/outputPower";
  Fixture seeded;
  Resource meter = *host.peek(power);
  meter.values["value"] = ResourceValue(100.0);
  seeded.resources.emplace_back(power, meter);
  host.applyFixture(seeded);
  host.tickModels(TimePoint(1s));
  host.tickModels(TimePoint(1s + 200ms));
  const double next = host.peek(power)->values.at("value").getDoubleValue();
  // One step from 100 towards the nominal 1250, with noise of a few watts.
  EXPECT_GT(next, 100.0);
  EXPECT_LT(next, 400.0);
}

TEST_F(MeterModelTest, AReadingOfAnotherTypeIsLeftAlone) {
  const std::string power = "/meters/rf/output/forwardPower";
  Fixture seeded;
  seeded.resources.emplace_back(power, Resource(ResourceValue(std::string("n/a"))));
  host.applyFixture(seeded);
  host.tickModels(TimePoint(1s));
  host.tickModels(TimePoint(2s));
  EXPECT_EQ(host.peek(power)->values.at("value").getStringValue(), "n/a");
}

TEST_F(MeterModelTest, TheFixtureSetsTheIntervalOrStopsTheMovement) {
  host.waitForListeners();
  RecordingListener listener("/meters/**", {CCRUD::Update});
  host.addResourceListener(nullptr, &listener);
  Json::Value slow;
  slow["updateIntervalMs"] = 500;
  host.applyFixture(sectionFixture(slow));
  host.tickModels(TimePoint(1s));
  host.tickModels(TimePoint(1s + 400ms));
  EXPECT_EQ(updatesAfter(listener), 0u);
  host.tickModels(TimePoint(1s + 500ms));
  EXPECT_EQ(updatesAfter(listener), listedMeters().size());

  Json::Value still;
  still["moving"] = false;
  host.applyFixture(sectionFixture(still));
  const Resource before = *host.peek("/meters/fans/fan1/speed");
  for (int i = 2; i < 10; ++i) host.tickModels(TimePoint(std::chrono::seconds(i)));
  EXPECT_EQ(updatesAfter(listener), listedMeters().size());
  EXPECT_EQ(host.peek("/meters/fans/fan1/speed")->values.at("value").getIntValue(),
            before.values.at("value").getIntValue());
  host.removeResourceListener(nullptr, &listener);
}

TEST_F(MeterModelTest, AnUnreadableMeterStaysListedWithoutAResourceAndIsNotRecreated) {
  Json::Value section;
  section["unreadable"].append("/meters/rf/output/vswr");
  host.applyFixture(sectionFixture(section));
  EXPECT_FALSE(host.peek("/meters/rf/output/vswr").has_value());
  const std::vector<std::string> group = textsOf(*host.peek("/meters/rf/output"));
  EXPECT_NE(std::find(group.begin(), group.end(), "/meters/rf/output/vswr"), group.end());
  for (int i = 1; i < 5; ++i) host.tickModels(TimePoint(std::chrono::seconds(i)));
  EXPECT_FALSE(host.peek("/meters/rf/output/vswr").has_value());
  HostWithUsers users;
  users.host->applyFixture(sectionFixture(section));
  ModelRegistry::install(*users.host, {makeMeters});
  EXPECT_FALSE(users.host->peek("/meters/rf/output/vswr").has_value());
  EXPECT_THROW(users.run(CCRUD::Read, "/meters/rf/output/vswr", users.viewerSession),
               tavelabi::NonExistentResourcePathException);
  EXPECT_TRUE(users.host->peek("/meters/rf/output/reflectedPower").has_value());
}

TEST_F(MeterModelTest, ABadSectionIsRefused) {
  Json::Value zero;
  zero["updateIntervalMs"] = 0;
  EXPECT_THROW(host.applyFixture(sectionFixture(zero)), std::exception);
  Json::Value word;
  word["moving"] = "no";
  EXPECT_THROW(host.applyFixture(sectionFixture(word)), std::exception);
  Json::Value paths;
  paths["unreadable"].append(3);
  EXPECT_THROW(host.applyFixture(sectionFixture(paths)), std::exception);
}

TEST(MeterModelRegistryTest, TheRegistryInstallsTheMetersAndKnowsTheirSection) {
  const std::vector<std::string> names = ModelRegistry::names();
  EXPECT_NE(std::find(names.begin(), names.end(), "meters"), names.end());
  const std::vector<std::string> sections = ModelRegistry::fixtureSections();
  EXPECT_NE(std::find(sections.begin(), sections.end(), "meters"), sections.end());
}

TEST(MeterTreeTest, GuidsAreStableAndDifferPerPath) {
  EXPECT_EQ(MeterTree::guidOf("/meters/a"), MeterTree::guidOf("/meters/a"));
  EXPECT_NE(MeterTree::guidOf("/meters/a"), MeterTree::guidOf("/meters/b"));
  std::set<std::string> guids;
  for (const MeterDefinition* meter : MeterTree::meters())
    guids.insert(MeterTree::guidOf(meter->path));
  EXPECT_EQ(guids.size(), MeterTree::meters().size());
}

}  // namespace
}  // namespace halvor::sim
