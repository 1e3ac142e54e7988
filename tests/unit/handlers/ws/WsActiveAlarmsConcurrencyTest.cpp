#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "halvor/protobuf/Monitoring.pb.h"
#include "kelo/KeloHost.h"
#include "kelo/handlers/http/alarms/AlarmEndpointHelperClass.h"
#include "kelo/handlers/ws/WsActiveAlarms.h"
#include "sim/Fixture.h"
#include "sim/FixtureLoader.h"
#include "sim/models/AlarmModel.h"
#include "unit/handlers/ws/WsTestSupport.h"

namespace halvor::kelo::test {
namespace {

// The demo's alarms come and go on the model's thread while the host pushes the active list to
// a subscriber and clients read the active alarms: every change is pushed once, as a whole list
// that decodes, and the last push is the list as it is stored.
TEST(WsActiveAlarmsConcurrencyTest, AlarmsMovingWhilePushedAndRead) {
  WsUnitHost unitHost;
  LogCapture log{WsUnitHost::kLoggerId};
  unitHost.setConnectivity("127.0.0.1", 5);
  unitHost.host().applyFixture(
      sim::FixtureLoader::parse(R"({"alarms": {"periodSeconds": 1}})", "concurrency.json"));
  const std::string session = unitHost.openSession("viewer");
  WsActiveAlarms endpoint;
  const auto conn = std::make_shared<FakeConnection>();
  endpoint.handleNewConnection(upgradeRequest("", "SessionID=" + session), conn);
  ASSERT_EQ(conn->sent().size(), 1u);

  constexpr int kChanges = 60;
  std::atomic<bool> stop{false};
  std::atomic<int> reads{0};
  std::atomic<int> failedReads{0};
  std::thread model([&] {
    // The first tick starts the model's clock; each later one, a second on, makes one change.
    for (int second = 0; second <= kChanges; ++second) {
      unitHost.host().tickModels(tavelabi::TimePoint(std::chrono::seconds(second)));
      std::this_thread::sleep_for(std::chrono::microseconds(500));
    }
  });
  std::vector<std::thread> readers;
  for (int r = 0; r < 2; ++r) {
    readers.emplace_back([&] {
      const auto req = upgradeRequest();
      while (!stop.load()) {
        WebKeloInterface& plugin = KeloHost::plugin();
        try {
          AlarmEndpointHelperClass::generateAlarmList(req, plugin.tavel, plugin.pluginInfo, session,
                                                      tavelabi::Resource());
          reads.fetch_add(1);
        } catch (const std::exception&) {
          failedReads.fetch_add(1);
        }
      }
    });
  }
  model.join();
  unitHost.host().waitForListeners();
  stop = true;
  for (std::thread& reader : readers) reader.join();

  const std::vector<FakeConnection::Frame> frames = conn->sent();
  EXPECT_EQ(frames.size(), 1u + kChanges);
  protobuf::AlarmList last;
  for (const FakeConnection::Frame& frame : frames) {
    EXPECT_EQ(frame.type, web::WebSocketMessageType::Binary);
    ASSERT_TRUE(last.ParseFromString(frame.data));
  }
  const tavelabi::Resource stored = unitHost.host().peek(sim::AlarmModel::kActivePath).value();
  const auto& listed = stored.values.at("value").getListValue();
  ASSERT_EQ(last.alarms_size(), static_cast<int>(listed.size()));
  for (int i = 0; i < last.alarms_size(); ++i) {
    EXPECT_EQ(last.alarms(i).path().value(), listed[i].getStringValue());
    EXPECT_TRUE(last.alarms(i).active().value());
  }
  EXPECT_GT(reads.load(), 0);
  EXPECT_EQ(failedReads.load(), 0);
  EXPECT_EQ(log.count(el::Level::Error, ""), 0u);
}

}  // namespace
}  // namespace halvor::kelo::test
