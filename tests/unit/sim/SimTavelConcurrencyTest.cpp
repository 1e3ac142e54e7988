#include <gtest/gtest.h>

#include <atomic>
#include <map>
#include <random>
#include <thread>
#include <vector>

#include "SimTestSupport.h"
#include "sim/SimTavel.h"
#include "sim/models/DemoModel.h"
#include "sim/models/ModelRegistry.h"
#include "tavelabi/Exceptions.h"

namespace halvor::sim {
namespace {

using kelo::test::HostWithUsers;
using tavelabi::AuthorizationFailure;
using tavelabi::CCRUD;
using tavelabi::NonExistentResourcePathException;
using tavelabi::Resource;
using tavelabi::ResourceAction;
using tavelabi::ResourceValue;

constexpr int kThreads = 8;
constexpr int kActionsPerThread = 10'000;
constexpr int kPathsPerThread = 10;

// Counts Create and Update calls from the dispatcher.
class CountingListener : public tavelabi::AbstractResourceListener {
 public:
  CountingListener() : AbstractResourceListener("**", {CCRUD::Create, CCRUD::Update}) {}
  operator std::string() override { return "counting"; }
  void processResourceListener(const tavelabi::TimePoint&, ResourceAction&) override {
    calls.fetch_add(1);
  }
  std::atomic<long> calls{0};
};

// One worker: it owns the paths "/t<n>/p<k>" and keeps a model of them; it also writes a shared
// resource, opens and closes sessions and tries writes with a read-only session.
class Worker {
 public:
  Worker(HostWithUsers& h, int index, std::string session)
      : h_(h), index_(index), session_(std::move(session)), random_(1234 + index) {}

  void run() {
    for (int i = 0; i < kActionsPerThread; ++i) {
      try {
        step(i);
      } catch (const std::exception& error) {
        ++unexpected;
        if (firstError.empty()) firstError = error.what();
      }
    }
  }

  std::string prefix() const { return "/t" + std::to_string(index_); }

  std::map<std::string, int> model;
  long dispatchable = 0;  // Create and Update that succeeded
  int unexpected = 0;
  std::string firstError;

 private:
  std::string ownPath() { return prefix() + "/p" + std::to_string(random_() % kPathsPerThread); }

  void step(int i) {
    switch (random_() % 10) {
      case 0:
      case 1:
        return create(i);
      case 2:
      case 3:
        return read();
      case 4:
        return update(i);
      case 5:
        return remove();
      case 6:
        return list();
      case 7:
        return shared(i);
      case 8:
        return readOnlyWrite();
      default:
        return sessionRoundTrip();
    }
  }

  void create(int i) {
    std::string path = ownPath();
    Resource resource("value", ResourceValue(i));
    resource.values["thread"] = ResourceValue(index_);
    h_.run(CCRUD::Create, path, session_, resource);
    model[path] = i;
    ++dispatchable;
  }

  void read() {
    std::string path = ownPath();
    auto expected = model.find(path);
    if (expected == model.end()) {
      expectMissing([&] { h_.run(CCRUD::Read, path, session_); });
      return;
    }
    Resource answer =
        h_.run(CCRUD::Read, path, session_, Resource(SimTavel::kBypassKey, ResourceValue(true)));
    if (answer.values.at("value").getIntValue() != expected->second) ++unexpected;
  }

  void update(int i) {
    std::string path = ownPath();
    if (model.count(path) == 0) {
      expectMissing([&] { h_.run(CCRUD::Update, path, session_, Resource(ResourceValue(i))); });
      return;
    }
    Resource answer = h_.run(CCRUD::Update, path, session_, Resource(ResourceValue(i)));
    if (answer.values.at("thread").getIntValue() != index_) ++unexpected;
    model[path] = i;
    ++dispatchable;
  }

  void remove() {
    std::string path = ownPath();
    if (model.count(path) == 0) {
      expectMissing([&] { h_.run(CCRUD::Delete, path, session_); });
      return;
    }
    h_.run(CCRUD::Delete, path, session_);
    model.erase(path);
  }

  void list() {
    Resource answer = h_.run(CCRUD::Command, "/resource/list", session_,
                             Resource(ResourceValue(prefix() + "/**")));
    const auto& paths = answer.values.at("value").getListValue();
    if (paths.size() != model.size()) {
      ++unexpected;
      return;
    }
    auto expected = model.begin();
    for (const ResourceValue& path : paths) {
      if (path.getStringValue() != (expected++)->first) ++unexpected;
    }
  }

  void shared(int i) {
    h_.run(CCRUD::Update, "/shared", session_,
           Resource(std::string("t").append(std::to_string(index_)), ResourceValue(i)));
    ++dispatchable;
  }

  void readOnlyWrite() {
    try {
      h_.run(CCRUD::Update, "/shared", h_.viewerSession, Resource(ResourceValue(0)));
      ++unexpected;
    } catch (const AuthorizationFailure&) {
    }
    h_.run(CCRUD::Read, "/shared", h_.viewerSession);
  }

  void sessionRoundTrip() {
    std::string client = h_.run(CCRUD::Command, "/session/command/newSession", session_)
                             .values.at("sessionId")
                             .getStringValue();
    Resource credentials;
    credentials.values["username"] = ResourceValue(std::string("viewer"));
    credentials.values["password"] = ResourceValue(std::string("viewer-pw"));
    h_.run(CCRUD::Command, "/user/command/login", client, credentials);
    if (h_.run(CCRUD::Read, "/session/sessions/" + client, client)
            .values.at("username")
            .getStringValue() != "viewer") {
      ++unexpected;
    }
    h_.run(CCRUD::Command, "/user/command/logout", client);
  }

  void expectMissing(const std::function<void()>& call) {
    try {
      call();
      ++unexpected;
    } catch (const NonExistentResourcePathException&) {
    }
  }

  HostWithUsers& h_;
  int index_;
  std::string session_;
  std::mt19937 random_;
};

TEST(SimTavelConcurrencyTest, EightThreadsOfMixedActionsLeaveAConsistentTree) {
  HostWithUsers h;
  h.run(CCRUD::Create, "/shared", h.adminSession);
  h.host->waitForListeners();  // so that the listener below does not see that Create
  CountingListener listener;
  h.host->addResourceListener(&h.info, &listener);

  std::vector<std::unique_ptr<Worker>> workers;
  for (int t = 0; t < kThreads; ++t) {
    std::string session = h.host->openSession(t % 2 == 0 ? "admin" : "oper");
    workers.push_back(std::make_unique<Worker>(h, t, session));
  }
  std::vector<std::thread> threads;
  for (auto& worker : workers) threads.emplace_back([&worker] { worker->run(); });
  for (auto& thread : threads) thread.join();
  h.host->waitForListeners();

  long dispatchable = 0;
  Resource shared = *h.host->peek("/shared");
  for (const auto& worker : workers) {
    EXPECT_EQ(0, worker->unexpected) << worker->prefix() << ": " << worker->firstError;
    dispatchable += worker->dispatchable;
    std::vector<std::string> paths = h.host->listPaths(worker->prefix() + "/**");
    ASSERT_EQ(worker->model.size(), paths.size()) << worker->prefix();
    for (const auto& [path, value] : worker->model) {
      auto stored = h.host->peek(path);
      ASSERT_TRUE(stored.has_value()) << path;
      EXPECT_EQ(value, stored->values.at("value").getIntValue()) << path;
    }
    EXPECT_EQ(1u, shared.values.count("t" + worker->prefix().substr(2))) << worker->prefix();
  }
  EXPECT_EQ(dispatchable, listener.calls.load()) << "one call per Create and Update";
  // Only the three sessions of the fixture and the workers' own are left.
  EXPECT_EQ(3u + kThreads, h.host->sessionCount());
  h.host->removeResourceListener(&h.info, &listener);
}

// The loop's thread ticks the models while other threads read the demo's subtree by glob, run
// commands from the table and add commands to it.
TEST(SimTavelConcurrencyTest, ModelTicksGlobReadsAndTheCommandTableRunTogether) {
  HostWithUsers h;
  ModelRegistry::installAll(*h.host);
  constexpr int kTicks = 2'000;
  constexpr int kReaders = 4;
  std::thread loop([&] {
    for (int i = 0; i < kTicks; ++i) {
      h.host->tickModels(tavelabi::TimePoint(std::chrono::seconds(i)));
    }
  });
  std::atomic<int> problems{0};
  std::vector<std::thread> readers;
  for (int r = 0; r < kReaders; ++r) {
    readers.emplace_back([&, r] {
      std::string path = "/reader" + std::to_string(r) + "/command/echo";
      h.host->addCommands({{path, [r](ResourceAction&) { return Resource(ResourceValue(r)); }}},
                          "reader " + std::to_string(r));
      int last = -1;
      for (int i = 0; i < 2'000; ++i) {
        Resource demo = h.run(CCRUD::Read, "/demo/**", h.viewerSession);
        int count = demo.values.at(DemoModel::kCounterPath).getMapValue().at("value").getIntValue();
        if (demo.values.size() != 2 || count < last) ++problems;
        last = count;
        if (h.run(CCRUD::Command, path, h.operatorSession).values.at("value").getIntValue() != r) {
          ++problems;
        }
      }
    });
  }
  loop.join();
  for (auto& reader : readers) reader.join();
  EXPECT_EQ(0, problems.load());
  // The first tick starts the clock; each later one, a second on, counts.
  EXPECT_EQ(kTicks - 1, h.host->peek(DemoModel::kCounterPath)->values.at("value").getIntValue());
}

}  // namespace
}  // namespace halvor::sim
