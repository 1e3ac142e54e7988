#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "ScheduleTestData.h"
#include "kelo/handlers/http/schedule/ScheduleHelperClass.h"
#include "support/FakePluginInfo.h"
#include "support/Requests.h"
#include "support/ScriptedHost.h"

namespace halvor::kelo::test {
namespace {

// The preset list is replaced by lists of rules while days, summaries, single rules and the
// schedule's pushes read it on other threads: every reader sees one whole list, old or new.
TEST(ScheduleHelperClassConcurrencyTest, ReadersSeeAWholePresetListWhileItIsReplaced) {
  ScheduleHelperClass::setPresetList(presetEntries({{"1", "Morning"}}));
  ScriptedHost host;
  host.script("/presets/generateList", {presetListAnswer({{"1", "Morning"}, {"2", "Day"}}),
                                        presetListAnswer({{"1", "Morning"}}),
                                        presetListAnswer({{"2", "Day"}, {"1", "Morning"}})});
  host.script("/scheduler/rules", {hostRules({{"5", hostRule(1, {"monday"})}})});
  FakePluginInfo plugin;
  const web::HttpRequestPtr req = makeRequest(web::Get, "/1/api/schedules", "");

  std::atomic<bool> stop{false};
  std::atomic<int> wrongNames{0};
  std::atomic<int> reads{0};
  std::vector<std::thread> readers;
  for (int n = 0; n < 3; ++n) {
    readers.emplace_back([&] {
      while (!stop) {
        if (ScheduleHelperClass::presetNameOf("1") != std::optional<std::string>("Morning")) {
          ++wrongNames;
        }
        const protobuf::PresetSchedule rule =
            ScheduleHelperClass::getCurrentPresetScheduleInfo(req, &host, &plugin, "s1", "5");
        if (rule.broadcastpreset()
                .resources()
                .at("presetName")
                .values()
                .at("value")
                .stringvalue()
                .value() != "Morning") {
          ++wrongNames;
        }
        ++reads;
      }
    });
  }
  for (int n = 0; n < 300; ++n) ScheduleHelperClass::getPresetList(req, &host, &plugin, "s1");
  while (reads < 100) std::this_thread::yield();
  stop = true;
  for (std::thread& reader : readers) reader.join();
  EXPECT_EQ(wrongNames, 0);
  ScheduleHelperClass::setPresetList({});
}

}  // namespace
}  // namespace halvor::kelo::test
