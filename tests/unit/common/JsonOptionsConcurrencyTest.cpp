#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "halvor/factories/SettingsFactories.h"
#include "halvor/protobuf/Resource.pb.h"
#include "kelo/common/JsonOptions.h"
#include "kelo/common/ResourceConverter.h"
#include "tavelabi/Resource.h"

namespace halvor::kelo {
namespace {

// Handlers print, parse and build on every I/O thread at once: the shared options and the
// factories' rule table are made on first use, from whichever thread comes first.
TEST(JsonOptionsConcurrencyTest, ThreadsShareOptionsAndFactoryRules) {
  constexpr int kThreads = 4;
  constexpr int kRounds = 200;
  std::atomic<int> failures{0};
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([thread, &failures] {
      for (int round = 0; round < kRounds; ++round) {
        tavelabi::Resource host("minLength", tavelabi::ResourceValue(thread * kRounds + round));
        protobuf::HalvorPbFactory2Validations factory;
        const std::string json = JsonOptions::toJson(*factory.build(&host));
        protobuf::Resource parsed;
        const std::string resourceJson =
            JsonOptions::toJson(ResourceConverter::toHalvorPbResource(host));
        if (!JsonOptions::fromJson(resourceJson, parsed).ok() ||
            ResourceConverter::toTavelAbiResource(parsed).values != host.values ||
            json != R"({"minLength":)" + std::to_string(thread * kRounds + round) + "}") {
          ++failures;
        }
        (void)JsonOptions::toJsonWithPrimitives(parsed);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(failures.load(), 0);
}

}  // namespace
}  // namespace halvor::kelo
