#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <mutex>

#include "SimTestSupport.h"
#include "sim/models/DemoModel.h"
#include "sim/models/ModelRegistry.h"
#include "tavelabi/Exceptions.h"

namespace halvor::sim {
namespace {

using namespace std::chrono_literals;
using kelo::test::HostWithUsers;
using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceAction;
using tavelabi::ResourceValue;
using tavelabi::TimePoint;

// A model as a domain would write one: two commands, a fixture section, a resource it seeds.
class MeterModel : public Model {
 public:
  static constexpr const char* kLevelPath = "/meter/level";

  std::string name() const override { return "meter"; }
  std::vector<Command> commands() override {
    return {{"/meter/command/reset", bind(&MeterModel::reset)},
            {"/meter/command/peak", bind(&MeterModel::peak)}};
  }
  std::string fixtureSection() const override { return "meter"; }
  void applyFixture(const Json::Value& section) override {
    std::lock_guard lock(mutex_);
    peak_ = section["peak"].asInt();
  }
  void seed() override { host().createIfAbsent(kLevelPath, Resource(ResourceValue(5))); }

  Resource reset(ResourceAction& /*action*/) {
    ResourceAction update(CCRUD::Update, kLevelPath, Resource(ResourceValue(0)), nullptr, "");
    return host().processInternalAction(update);
  }
  Resource peak(ResourceAction& /*action*/) {
    std::lock_guard lock(mutex_);
    return Resource("peak", ResourceValue(peak_));
  }

 private:
  std::mutex mutex_;
  int peak_ = -1;
};

// Serves a path that the host serves already.
class SquatterModel : public Model {
 public:
  std::string name() const override { return "squatter"; }
  std::vector<Command> commands() override {
    return {{"/squatter/command/fine", bind(&SquatterModel::answer)},
            {"/resource/list", bind(&SquatterModel::answer)}};
  }
  Resource answer(ResourceAction& /*action*/) { return Resource(); }
};

// Fails on every tick.
class BrokenModel : public Model {
 public:
  std::string name() const override { return "broken"; }
  void tick(const TimePoint& /*now*/) override { throw std::runtime_error("out of order"); }
};

std::unique_ptr<Model> makeBroken() { return std::make_unique<BrokenModel>(); }
std::unique_ptr<Model> makeMeter() { return std::make_unique<MeterModel>(); }
std::unique_ptr<Model> makeSquatter() { return std::make_unique<SquatterModel>(); }

int counterOf(const SimTavel& host) {
  return host.peek(DemoModel::kCounterPath)->values.at("value").getIntValue();
}

Fixture counterFixture(int value) {
  Fixture fixture;
  fixture.resources.emplace_back(DemoModel::kCounterPath, Resource(ResourceValue(value)));
  return fixture;
}

TEST(ModelTest, DemoModelCreatesAtInstallationThenUpdatesOncePerSecond) {
  SimTavel host(HostWithUsers::quietOptions());
  kelo::test::RecordingListener listener("/demo/**", {CCRUD::Create, CCRUD::Update});
  host.addResourceListener(nullptr, &listener);
  host.installModel(std::make_unique<DemoModel>());
  ASSERT_TRUE(host.peek(DemoModel::kClockPath).has_value());
  EXPECT_EQ(0, counterOf(host));
  EXPECT_NE(std::string::npos,
            host.peek(DemoModel::kClockPath)->values.at("value").getStringValue().find('T'));
  TimePoint start(10s);
  host.tickModels(start);
  host.tickModels(start + 500ms);  // too early
  EXPECT_EQ(0, counterOf(host));
  host.tickModels(start + 1s);
  host.tickModels(start + 2s);
  EXPECT_EQ(2, counterOf(host));
  host.waitForListeners();
  auto calls = listener.calls();
  ASSERT_EQ(6u, calls.size());
  EXPECT_EQ(CCRUD::Create, calls[0].verb);
  EXPECT_EQ(CCRUD::Update, calls[5].verb);
  EXPECT_EQ(DemoModel::kCounterPath, calls[5].path);
  EXPECT_EQ(2, calls[5].resource.values.at("value").getIntValue());
  host.removeResourceListener(nullptr, &listener);
}

TEST(ModelTest, AModelThatFailsItsTickIsReportedAndTheOthersStillTick) {
  SimTavel host(HostWithUsers::quietOptions());
  ModelRegistry::install(host, {makeBroken});
  ModelRegistry::installAll(host);
  ::testing::internal::CaptureStderr();
  host.tickModels(TimePoint(1s));
  host.tickModels(TimePoint(2s));
  std::string errors = ::testing::internal::GetCapturedStderr();
  EXPECT_NE(std::string::npos, errors.find("[model] broken tick failed: out of order")) << errors;
  EXPECT_EQ(1, counterOf(host));
}

TEST(ModelTest, InstallAllPutsEveryModelOfTheRegistryOnTheHost) {
  SimTavel host(HostWithUsers::quietOptions());
  ModelRegistry::installAll(host);
  EXPECT_EQ(ModelRegistry::names(), host.modelNames());
  const std::vector<std::string> names = host.modelNames();
  EXPECT_NE(std::find(names.begin(), names.end(), "demo"), names.end());
  EXPECT_TRUE(host.peek(DemoModel::kCounterPath).has_value());
}

TEST(ModelTest, AHostWithoutModelsHasNoneOfTheirResources) {
  SimTavel host(HostWithUsers::quietOptions());
  host.tickModels(TimePoint(5s));
  EXPECT_TRUE(host.modelNames().empty());
  EXPECT_TRUE(host.listPaths("/demo/**").empty());
}

TEST(ModelTest, AFixtureAppliedAfterInstallationKeepsItsValueAndTheModelCountsOnFromIt) {
  SimTavel host(HostWithUsers::quietOptions());
  ModelRegistry::installAll(host);
  host.applyFixture(counterFixture(100));
  host.tickModels(TimePoint(1s));
  EXPECT_EQ(100, counterOf(host));
  host.tickModels(TimePoint(2s));
  EXPECT_EQ(101, counterOf(host));
}

TEST(ModelTest, AFixtureAppliedBeforeInstallationIsNotOverwrittenBySeeding) {
  SimTavel host(HostWithUsers::quietOptions());
  host.applyFixture(counterFixture(100));
  ModelRegistry::installAll(host);
  EXPECT_EQ(100, counterOf(host));
  EXPECT_TRUE(host.peek(DemoModel::kClockPath).has_value());
}

TEST(ModelTest, TheCounterWrapsInsteadOfOverflowing) {
  SimTavel host(HostWithUsers::quietOptions());
  host.applyFixture(counterFixture(std::numeric_limits<int>::max()));
  ModelRegistry::installAll(host);
  host.tickModels(TimePoint(1s));
  host.tickModels(TimePoint(2s));
  EXPECT_EQ(0, counterOf(host));
}

TEST(ModelTest, ModelCommandsRunThroughTheHostWithRightsChecked) {
  HostWithUsers h;
  ModelRegistry::install(*h.host, {makeMeter});
  EXPECT_EQ(5, h.host->peek(MeterModel::kLevelPath)->values.at("value").getIntValue());
  Resource answer = h.run(CCRUD::Command, "/meter/command/reset", h.operatorSession);
  EXPECT_EQ(0, answer.values.at("value").getIntValue());
  EXPECT_EQ(0, h.host->peek(MeterModel::kLevelPath)->values.at("value").getIntValue());
  EXPECT_THROW(h.run(CCRUD::Command, "/meter/command/reset", h.viewerSession),
               tavelabi::AuthorizationFailure);
}

TEST(ModelTest, TwoModelsServingOneCommandPathAreRefusedAtInstallation) {
  SimTavel host(HostWithUsers::quietOptions());
  ModelRegistry::install(host, {makeMeter});
  try {
    ModelRegistry::install(host, {makeMeter});
    FAIL() << "no exception";
  } catch (const DuplicateCommandError& error) {
    EXPECT_STREQ("command /meter/command/reset of model meter is already served by model meter",
                 error.what());
  }
  EXPECT_EQ(std::vector<std::string>{"meter"}, host.modelNames());
}

TEST(ModelTest, AModelServingABuiltInCommandIsRefusedWithNoneOfItsCommands) {
  HostWithUsers h;
  EXPECT_THROW(ModelRegistry::install(*h.host, {makeSquatter}), DuplicateCommandError);
  EXPECT_TRUE(h.host->modelNames().empty());
  EXPECT_THROW(h.run(CCRUD::Command, "/squatter/command/fine", h.adminSession),
               tavelabi::NonExistentResourcePathException);
  Resource listed = h.run(CCRUD::Command, "/resource/list", h.adminSession,
                          Resource(ResourceValue(std::string("/user/users/admin"))));
  EXPECT_EQ(1u, listed.values.at("value").getListValue().size());
}

TEST(ModelTest, AFixtureSectionReachesItsModelWhetherInstalledBeforeOrAfter) {
  Fixture fixture;
  Json::Value section;
  section["peak"] = 42;
  fixture.sections.emplace_back("meter", section);
  for (bool fixtureFirst : {true, false}) {
    HostWithUsers h;
    if (fixtureFirst) h.host->applyFixture(fixture);
    ModelRegistry::install(*h.host, {makeMeter});
    if (!fixtureFirst) h.host->applyFixture(fixture);
    Resource answer = h.run(CCRUD::Command, "/meter/command/peak", h.adminSession);
    EXPECT_EQ(42, answer.values.at("peak").getIntValue()) << "fixture first: " << fixtureFirst;
  }
}

}  // namespace
}  // namespace halvor::sim
