#include <gtest/gtest.h>
#include <json/value.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "SimTestSupport.h"
#include "sim/models/MeterModel.h"
#include "sim/models/ModelRegistry.h"
#include "tavelabi/Exceptions.h"

namespace halvor::sim {
namespace {

using namespace std::chrono_literals;
using kelo::test::HostWithUsers;
using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;
using tavelabi::TimePoint;

std::unique_ptr<Model> makeMeters() { return std::make_unique<MeterModel>(); }

// The loop's thread moves the meters as fast as it can while clients read them, write readings
// and delete and recreate a meter, and fixtures change the interval and the movement: no data
// race, no failure other than a meter that a client has just deleted.
TEST(MeterModelConcurrencyTest, TicksClientsAndFixturesRunTogether) {
  HostWithUsers h;
  ModelRegistry::install(*h.host, {makeMeters});
  std::atomic<bool> stop{false};
  std::atomic<long> ticks{0};
  std::atomic<int> unexpected{0};

  std::thread loop([&] {
    TimePoint now(1s);
    while (!stop.load()) {
      h.host->tickModels(now);
      now += 50ms;
      ticks.fetch_add(1);
    }
  });
  std::vector<std::thread> clients;
  for (int c = 0; c < 3; ++c) {
    clients.emplace_back([&, c] {
      const std::string own = "/meters/fans/fan" + std::to_string(c + 1) + "/current";
      for (int i = 0; i < 2000; ++i) {
        try {
          h.run(CCRUD::Read, "/meters/rf/output/forwardPower", h.adminSession,
                Resource(std::string("byPassSessionActivityTimerUpdate"), ResourceValue(true)));
          h.run(CCRUD::Update, own, h.operatorSession, Resource(ResourceValue(1.0 + i)));
          if (i % 50 == 0) {
            h.run(CCRUD::Delete, own, h.adminSession);
            h.run(CCRUD::Create, own, h.adminSession, Resource(ResourceValue(0.5)));
          }
        } catch (const tavelabi::NonExistentResourcePathException&) {
          // The meter was between its Delete and its Create.
        } catch (...) {
          unexpected.fetch_add(1);
        }
      }
    });
  }
  for (int i = 0; i < 40; ++i) {
    Fixture fixture;
    Json::Value section;
    section["updateIntervalMs"] = 50 + (i % 3) * 50;
    section["moving"] = i % 4 != 3;
    fixture.sections.emplace_back("meters", section);
    h.host->applyFixture(fixture);
    std::this_thread::sleep_for(1ms);
  }
  for (std::thread& client : clients) client.join();
  stop.store(true);
  loop.join();
  h.host->waitForListeners();

  EXPECT_EQ(unexpected.load(), 0);
  EXPECT_GT(ticks.load(), 0);
  const Resource power = *h.host->peek("/meters/rf/output/forwardPower");
  EXPECT_GE(power.values.at("value").getDoubleValue(), power.values.at("min").getDoubleValue());
  EXPECT_LE(power.values.at("value").getDoubleValue(), power.values.at("max").getDoubleValue());
}

}  // namespace
}  // namespace halvor::sim
