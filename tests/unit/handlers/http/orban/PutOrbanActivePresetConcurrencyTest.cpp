#include <gtest/gtest.h>

#include <mutex>
#include <set>
#include <string>
#include <thread>

#include "OrbanTestSupport.h"
#include "kelo/handlers/http/orban/PutOrbanActivePreset.h"
#include "support/DeferredHandlerTest.h"
#include "support/FakePluginInfo.h"
#include "support/Requests.h"

namespace halvor::kelo::test {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;

// Two activations at once: each waits on its own thread of the background queue and each is
// answered once, with its own body. They are not kept apart: both Updates reach the host, in
// whatever order the threads give, and the host's last one decides what the processor takes.
TEST(PutOrbanActivePresetConcurrencyTest, TwoActivationsAtOnceWaitSideBySideAndEachIsAnswered) {
  startedBackgroundQueue(2);
  ScriptedReadsHost host;
  FakePluginInfo info;
  host.answer(CCRUD::Update, "/orban/activePreset/name", Resource());
  // Either name is found in the reported one, so each task reaches its second stage at once.
  host.scriptReads("/orban/activePreset/name", [](int) {
    Resource active("name", ResourceValue("Night+Drive"));
    active.values["set_value"] = ResourceValue("Drive");
    return active;
  });
  // The flag shows only once two different threads have read it: proof that both waits ran at
  // the same time. A wait alone would run out of reads and still be answered, so the set of
  // threads is what the test looks at.
  std::mutex mutex;
  std::set<std::thread::id> readers;
  host.scriptReads("/orban/activePreset/updated", [&](int) {
    std::lock_guard lock(mutex);
    readers.insert(std::this_thread::get_id());
    return Resource(ResourceValue(readers.size() == 2));
  });
  PutOrbanActivePreset handler({std::chrono::milliseconds(20), std::chrono::milliseconds(5)});
  Answers first;
  Answers second;
  const auto put = [&](const std::string& body, Answers& answers) {
    web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
    handler.putOrbanActivePreset(makeRequest(web::Put, "/1/api/orban/active", "", body), resp,
                                 &host, &info, "s1", answers.callback());
  };
  std::thread one([&] { put(R"({"name":"Night"})", first); });
  std::thread two([&] { put(R"({"name":"Drive"})", second); });
  one.join();
  two.join();
  ASSERT_NE(first.waitFor(), nullptr);
  ASSERT_NE(second.waitFor(), nullptr);
  EXPECT_EQ(first.waitFor()->body(), R"({"name":"Night"})");
  EXPECT_EQ(second.waitFor()->body(), R"({"name":"Drive"})");
  EXPECT_EQ(first.count(), 1u);
  EXPECT_EQ(second.count(), 1u);
  {
    std::lock_guard lock(mutex);
    EXPECT_EQ(readers.size(), 2u);
  }
  // Neither ran out of its 21 reads of the flag.
  EXPECT_LT(host.readsOf("/orban/activePreset/updated"), 42);
  std::set<std::string> asked;
  for (const auto& action : host.actionsOn("/orban/activePreset/name")) {
    if (action.action == CCRUD::Update) {
      asked.insert(action.resource.values.at("set_value").getStringValue());
    }
  }
  EXPECT_EQ(asked, (std::set<std::string>{"Night", "Drive"}));
}

}  // namespace
}  // namespace halvor::kelo::test
