#include <gtest/gtest.h>
#include <json/value.h>

#include <chrono>
#include <stdexcept>
#include <string>

#include "SimTestSupport.h"
#include "sim/models/VersionModel.h"
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

class VersionModelTest : public ::testing::Test {
 protected:
  void install(const std::string& platformError = "") {
    auto model = std::make_unique<VersionModel>();
    Json::Value section;
    section["serviceStepMs"] = 500;
    section["platformDelayMs"] = 0;
    if (!platformError.empty()) section["platformError"] = platformError;
    model->applyFixture(section);
    host.installModel(std::move(model));
  }

  Resource command(const std::string& path, const Resource& resource) {
    ResourceAction action(CCRUD::Command, path, resource, nullptr, "");
    return host.processInternalAction(action);
  }

  std::string state() {
    return host.peek(VersionModel::kQuery)->values.at("serviceState").getStringValue();
  }

  SimTavel host{HostWithUsers::quietOptions()};
};

TEST_F(VersionModelTest, TheServiceMovesThroughItsStatesStepByStep) {
  install();
  EXPECT_EQ(state(), "UNREGISTERED");
  Resource on("lodestarEnabled", ResourceValue(true));
  EXPECT_THROW(command("/lodestar/service/update", on), std::invalid_argument);
  on.values["companyName"] = ResourceValue("Radio");
  on.values["callSign"] = ResourceValue("KXYZ");
  command("/lodestar/service/update", on);
  EXPECT_EQ(state(), "ENABLING");
  host.tickModels(TimePoint(1s));
  host.tickModels(TimePoint(1s + 400ms));
  EXPECT_EQ(state(), "ENABLING");
  host.tickModels(TimePoint(1s + 500ms));
  EXPECT_EQ(state(), "ENABLED");
  command("/lodestar/service/update", Resource("lodestarEnabled", ResourceValue(false)));
  EXPECT_EQ(state(), "DISABLING");
  host.tickModels(TimePoint(3s));
  host.tickModels(TimePoint(4s));
  EXPECT_EQ(state(), "DISABLED");
  EXPECT_THROW(command("/lodestar/service/update", Resource("email", ResourceValue("nobody"))),
               std::invalid_argument);
}

TEST_F(VersionModelTest, RemoteSupportKeepsWhatItIsToldAndGivesAConnection) {
  install();
  Resource on("isEnabled", ResourceValue(true));
  on.values["port"] = ResourceValue(2200);
  EXPECT_TRUE(command("/command/qcore/controlSkyRunRemoteSupport", on).values.empty());
  const Resource state = command("/command/qcore/readSkyRunRemoteSupport", Resource());
  EXPECT_TRUE(state.values.at("isEnabled").getBoolValue());
  EXPECT_EQ(state.values.at("port").getIntValue(), 2200);
  EXPECT_EQ(state.values.at("connectionId").getIntValue(), 4711);
  on.values["port"] = ResourceValue(70000);
  EXPECT_EQ(command("/command/qcore/controlSkyRunRemoteSupport", on)
                .values.at("errorMessage")
                .getStringValue(),
            "The support port must be 1 to 65535");
}

TEST_F(VersionModelTest, APlatformOutOfReachAnswersItsErrorMessage) {
  install("qCore unreachable");
  EXPECT_EQ(command("/command/qcore/readSkyRunRemoteSupport", Resource())
                .values.at("errorMessage")
                .getStringValue(),
            "qCore unreachable");
}

}  // namespace
}  // namespace halvor::sim
