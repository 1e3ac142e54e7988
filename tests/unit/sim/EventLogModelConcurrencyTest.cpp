#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "SimTestSupport.h"
#include "sim/models/EventLogModel.h"
#include "sim/models/ModelRegistry.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::sim {
namespace {

using kelo::test::HostWithUsers;
using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceAction;
using tavelabi::ResourceValue;
using tavelabi::TimePoint;

std::unique_ptr<Model> makeEventLog() { return std::make_unique<EventLogModel>(); }

// Reads, exports and clearings from several threads while the loop adds new events: every
// answer is a consistent page (no more events than the count says) and nothing is torn.
TEST(EventLogModelConcurrencyTest, CommandsAndTicksMeetSafely) {
  SimTavel host(HostWithUsers::quietOptions());
  ModelRegistry::install(host, {makeEventLog});
  const std::filesystem::path directory = std::filesystem::temp_directory_path() /
                                          ("eventlog-concurrency-" + std::to_string(::getpid()));
  Fixture fixture;
  fixture.source = "test";
  Json::Value section;
  section["csvDirectory"] = directory.string();
  section["newEvents"] = true;
  fixture.sections.emplace_back("eventlog", section);
  host.applyFixture(fixture);

  std::atomic<bool> stop{false};
  std::atomic<int> inconsistent{0};
  std::thread loop([&] {
    // A new event is due 20 to 90 s after the last; a minute and a half per pass gives one
    // each pass, a few hundred in all, while the clients run.
    for (int pass = 0; pass < 400 && !stop.load(); ++pass) {
      host.tickModels(TimePoint(std::chrono::seconds(91 * pass)));
      std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
  });
  std::vector<std::thread> clients;
  for (int t = 0; t < 3; ++t) {
    clients.emplace_back([&, t] {
      for (int i = 0; i < 30; ++i) {
        Resource request;
        request.addValue("page", ResourceValue(1 + i % 3));
        request.addValue("pageSize", ResourceValue(50));
        request.addValue("displayOrder", ResourceValue(i % 2 == 0 ? "time" : "device"));
        const char* path = EventLogModel::kGetEvents;
        if (t == 1 && i % 10 == 9) path = EventLogModel::kDeleteEvents;
        if (t == 2 && i % 10 == 5) path = EventLogModel::kGenerateCsv;
        ResourceAction action(CCRUD::Command, path, request, nullptr, "");
        const Resource answer = host.processInternalAction(action);
        if (path == EventLogModel::kGetEvents) {
          const auto& page = answer.values.at("value").getListValue();
          if (page.size() > 50 ||
              static_cast<int>(page.size()) > answer.values.at("count").getIntValue()) {
            ++inconsistent;
          }
        }
      }
    });
  }
  for (std::thread& client : clients) client.join();
  stop.store(true);
  loop.join();
  EXPECT_EQ(inconsistent.load(), 0);
  EXPECT_TRUE(std::filesystem::exists(directory / "eventlog.csv"));
  std::filesystem::remove_all(directory);
}

}  // namespace
}  // namespace halvor::sim
