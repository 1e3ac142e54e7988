#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "TestPlugin.h"

namespace halvor::tavelabi {
namespace {

constexpr int kThreads = 8;
constexpr int kRounds = 2000;

// Each thread writes texts of its own, long enough to live on the heap, and reads every field;
// a read must always give one of the texts that some thread wrote whole.
std::string textOf(const std::string& field, int thread) {
  return field + "-written-by-thread-" + std::to_string(thread) + std::string(40, 'x');
}

TEST(BasePluginConcurrencyTest, GettersAndSettersFromEightThreads) {
  kelo::test::TestPlugin plugin(nullptr);
  std::set<std::string> valid = {""};
  for (const char* field : {"name", "version", "logger", "session"}) {
    for (int t = 0; t < kThreads; ++t) valid.insert(textOf(field, t));
  }

  std::atomic<int> torn{0};
  std::atomic<bool> go{false};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      while (!go.load()) std::this_thread::yield();
      for (int round = 0; round < kRounds; ++round) {
        plugin.setName(textOf("name", t));
        plugin.setVersion(textOf("version", t));
        plugin.setLoggerId(textOf("logger", t));
        plugin.setSessionId(textOf("session", t));
        plugin.setId(static_cast<uint32_t>(t * kRounds + round));
        for (const std::string& read :
             {plugin.getName(), plugin.getVersion(), plugin.getLoggerId(), plugin.getSessionId()}) {
          if (valid.count(read) == 0) ++torn;
        }
        if (plugin.getId() >= static_cast<uint32_t>(kThreads * kRounds)) ++torn;
      }
    });
  }
  go.store(true);
  for (std::thread& thread : threads) thread.join();

  EXPECT_EQ(torn.load(), 0);
  EXPECT_EQ(plugin.getName().rfind("name-written-by-thread-", 0), 0U);
  EXPECT_EQ(plugin.getSessionId().rfind("session-written-by-thread-", 0), 0U);
}

}  // namespace
}  // namespace halvor::tavelabi
