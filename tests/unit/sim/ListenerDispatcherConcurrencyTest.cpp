#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "SimTestSupport.h"
#include "sim/ListenerDispatcher.h"
#include "sim/SimTavel.h"
#include "tavelabi/Exceptions.h"

namespace halvor::sim {
namespace {

using kelo::test::HostWithUsers;
using kelo::test::RecordingListener;
using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceAction;
using tavelabi::ResourceValue;

const std::set<CCRUD> kAllVerbs{CCRUD::Command, CCRUD::Create, CCRUD::Read, CCRUD::Update,
                                CCRUD::Delete};

TEST(ListenerDispatcherTest, ActionsArriveInOrderOnOneOtherThread) {
  HostWithUsers h;
  RecordingListener listener("/o/x", {CCRUD::Create, CCRUD::Update});
  h.host->addResourceListener(&h.info, &listener);
  h.run(CCRUD::Create, "/o/x", h.adminSession, Resource(ResourceValue(-1)));
  for (int i = 0; i < 1000; ++i) {
    h.run(CCRUD::Update, "/o/x", h.adminSession, Resource(ResourceValue(i)));
  }
  h.host->waitForListeners();
  auto calls = listener.calls();
  ASSERT_EQ(1001u, calls.size());
  EXPECT_EQ(CCRUD::Create, calls[0].verb);
  for (int i = 0; i < 1000; ++i) {
    EXPECT_EQ(CCRUD::Update, calls[i + 1].verb);
    EXPECT_EQ(i, calls[i + 1].resource.values.at("value").getIntValue());
  }
  for (const auto& call : calls) {
    EXPECT_NE(std::this_thread::get_id(), call.thread);
    EXPECT_EQ(calls[0].thread, call.thread);
    EXPECT_EQ(1u, call.hopCount);
  }
  h.host->removeResourceListener(&h.info, &listener);
}

TEST(ListenerDispatcherTest, ListenerGetsTheResourceNowStored) {
  HostWithUsers h;
  RecordingListener listener("/m", {CCRUD::Update});
  h.host->addResourceListener(&h.info, &listener);
  h.run(CCRUD::Create, "/m", h.adminSession, Resource("a", ResourceValue(1)));
  h.run(CCRUD::Update, "/m", h.adminSession, Resource("b", ResourceValue(2)));
  h.host->waitForListeners();
  auto calls = listener.calls();
  ASSERT_EQ(1u, calls.size());
  EXPECT_EQ("/m", calls[0].path);
  EXPECT_EQ(1, calls[0].resource.values.at("a").getIntValue());
  EXPECT_EQ(2, calls[0].resource.values.at("b").getIntValue());
  h.host->removeResourceListener(&h.info, &listener);
}

TEST(ListenerDispatcherTest, OnlyCreateAndUpdateAreDispatched) {
  HostWithUsers h;
  RecordingListener listener("**", kAllVerbs);
  h.host->addResourceListener(&h.info, &listener);
  h.run(CCRUD::Create, "/v", h.adminSession, Resource(ResourceValue(1)));
  h.run(CCRUD::Read, "/v", h.adminSession);
  h.run(CCRUD::Update, "/v", h.adminSession, Resource(ResourceValue(2)));
  h.run(CCRUD::Delete, "/v", h.adminSession);
  h.run(CCRUD::Command, "/resource/list", h.adminSession);
  EXPECT_THROW(h.run(CCRUD::Update, "/v", h.adminSession), std::exception);  // failed: no call
  h.host->waitForListeners();
  auto calls = listener.calls();
  ASSERT_EQ(2u, calls.size());
  EXPECT_EQ(CCRUD::Create, calls[0].verb);
  EXPECT_EQ(CCRUD::Update, calls[1].verb);
  h.host->removeResourceListener(&h.info, &listener);
}

TEST(ListenerDispatcherTest, GlobAndVerbSetDecide) {
  HostWithUsers h;
  RecordingListener oneSegment("/a/*", {CCRUD::Create, CCRUD::Update});
  RecordingListener anyDepth("/a/**", {CCRUD::Create, CCRUD::Update});
  RecordingListener exact("/b/x", {CCRUD::Create, CCRUD::Update});
  RecordingListener updatesOnly("**", {CCRUD::Update});
  for (auto* listener : {&oneSegment, &anyDepth, &exact, &updatesOnly}) {
    h.host->addResourceListener(&h.info, listener);
  }
  for (const char* path : {"/a/1", "/a/1/2", "/b/x", "/b/y", "/a"}) {
    h.run(CCRUD::Create, path, h.adminSession);
  }
  h.run(CCRUD::Update, "/b/y", h.adminSession);
  h.host->waitForListeners();
  EXPECT_EQ(1u, oneSegment.calls().size());
  EXPECT_EQ(2u, anyDepth.calls().size());
  EXPECT_EQ(1u, exact.calls().size());
  ASSERT_EQ(1u, updatesOnly.calls().size());
  EXPECT_EQ("/b/y", updatesOnly.calls()[0].path);
  for (auto* listener : {&oneSegment, &anyDepth, &exact, &updatesOnly}) {
    h.host->removeResourceListener(&h.info, listener);
  }
}

TEST(ListenerDispatcherTest, ExceptionIsPrintedAndDispatchGoesOn) {
  HostWithUsers h;
  RecordingListener throwing("/e", {CCRUD::Create, CCRUD::Update});
  RecordingListener second("/e", {CCRUD::Create, CCRUD::Update});
  std::atomic<int> thrown{0};
  throwing.onCall = [&](ResourceAction&) {
    thrown.fetch_add(1);
    throw std::runtime_error("listener broke");
  };
  h.host->addResourceListener(&h.info, &throwing);
  h.host->addResourceListener(&h.info, &second);
  ::testing::internal::CaptureStderr();
  h.run(CCRUD::Create, "/e", h.adminSession);
  h.run(CCRUD::Update, "/e", h.adminSession);
  h.host->waitForListeners();
  std::string err = ::testing::internal::GetCapturedStderr();
  EXPECT_EQ(2, thrown.load());
  EXPECT_EQ(2u, second.calls().size());
  EXPECT_NE(std::string::npos,
            err.find("recording listener on /e failed on Create /e: listener broke"))
      << err;
  h.host->removeResourceListener(&h.info, &throwing);
  h.host->removeResourceListener(&h.info, &second);
}

// A listener that counts calls made after its removal returned.
class GuardedListener : public tavelabi::AbstractResourceListener {
 public:
  GuardedListener() : AbstractResourceListener("/h/**", {CCRUD::Update, CCRUD::Create}) {}
  operator std::string() override { return "guarded"; }
  void processResourceListener(const tavelabi::TimePoint&, ResourceAction&) override {
    if (removed.load()) lateCalls->fetch_add(1);
    calls.fetch_add(1);
  }
  std::atomic<bool> removed{false};
  std::atomic<int> calls{0};
  std::atomic<int>* lateCalls = nullptr;
};

TEST(ListenerDispatcherTest, NoCallAfterRemoveReturnsWhileUpdatesFly) {
  HostWithUsers h;
  h.run(CCRUD::Create, "/h/x", h.adminSession);
  std::atomic<bool> stop{false};
  std::vector<std::thread> writers;
  for (int t = 0; t < 3; ++t) {
    writers.emplace_back([&, t] {
      const std::string key = std::string("w").append(std::to_string(t));
      int i = 0;
      while (!stop.load()) {
        h.run(CCRUD::Update, "/h/x", h.adminSession, Resource(key, ResourceValue(i++)));
      }
    });
  }
  std::atomic<int> lateCalls{0};
  int totalCalls = 0;
  for (int round = 0; round < 20000; ++round) {
    auto listener = std::make_unique<GuardedListener>();
    listener->lateCalls = &lateCalls;
    h.host->addResourceListener(&h.info, listener.get());
    if (round % 3 == 0) std::this_thread::yield();
    h.host->removeResourceListener(&h.info, listener.get());
    listener->removed.store(true);
    totalCalls += listener->calls.load();
    // Deleting it at once: a later call would be a use after free under the sanitizers.
  }
  stop.store(true);
  for (auto& writer : writers) writer.join();
  h.host->waitForListeners();
  EXPECT_EQ(0, lateCalls.load());
  EXPECT_GT(totalCalls, 0) << "the listeners were never called: the test proved nothing";
}

TEST(ListenerDispatcherTest, ListenerMayRemoveItselfAndAddOthersFromItsCall) {
  HostWithUsers h;
  RecordingListener self("/s", {CCRUD::Create, CCRUD::Update});
  RecordingListener added("/s", {CCRUD::Update});
  self.onCall = [&](ResourceAction&) {
    h.host->removeResourceListener(&h.info, &self);
    h.host->addResourceListener(&h.info, &added);
  };
  h.host->addResourceListener(&h.info, &self);
  h.run(CCRUD::Create, "/s", h.adminSession);
  h.run(CCRUD::Update, "/s", h.adminSession);
  h.run(CCRUD::Update, "/s", h.adminSession);
  h.host->waitForListeners();
  EXPECT_EQ(1u, self.calls().size());
  EXPECT_EQ(2u, added.calls().size());
  h.host->removeResourceListener(&h.info, &added);
}

TEST(ListenerDispatcherTest, ListenerMayCallTheHostFromItsCall) {
  HostWithUsers h;
  RecordingListener mirror("/src", {CCRUD::Create, CCRUD::Update});
  RecordingListener sink("/dst", {CCRUD::Create});
  mirror.onCall = [&](ResourceAction& action) {
    h.run(CCRUD::Create, "/dst", h.adminSession, action.resource);
    h.host->waitForListeners();  // on the dispatcher thread: returns at once
  };
  h.host->addResourceListener(&h.info, &mirror);
  h.host->addResourceListener(&h.info, &sink);
  h.run(CCRUD::Create, "/src", h.adminSession, Resource(ResourceValue(5)));
  h.host->waitForListeners();
  h.host->waitForListeners();
  EXPECT_EQ(5, h.host->peek("/dst")->values.at("value").getIntValue());
  EXPECT_EQ(1u, sink.calls().size());
  h.host->removeResourceListener(&h.info, &mirror);
  h.host->removeResourceListener(&h.info, &sink);
}

TEST(ListenerDispatcherTest, CommandListenersRunConcurrentlyAndRemovalWaits) {
  HostWithUsers h;
  RecordingListener command("/command/slow", {CCRUD::Command});
  std::atomic<int> inside{0};
  std::atomic<int> maxInside{0};
  command.onCall = [&](ResourceAction&) {
    int now = inside.fetch_add(1) + 1;
    int seen = maxInside.load();
    while (now > seen && !maxInside.compare_exchange_weak(seen, now)) {
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    inside.fetch_sub(1);
  };
  h.host->addResourceListener(&h.info, &command);
  std::vector<std::thread> callers;
  for (int t = 0; t < 4; ++t) {
    callers.emplace_back([&] {
      try {
        h.run(CCRUD::Command, "/command/slow", h.adminSession);
      } catch (const tavelabi::NonExistentResourcePathException&) {
        // came after the removal
      }
    });
  }
  auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
  while (inside.load() == 0 && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::yield();
  }
  EXPECT_GT(inside.load(), 0) << "no call started";
  h.host->removeResourceListener(&h.info, &command);
  EXPECT_EQ(0, inside.load()) << "removal returned while a call was in progress";
  for (auto& caller : callers) caller.join();
  EXPECT_GE(maxInside.load(), 1);
}

TEST(ListenerDispatcherTest, StopsCleanlyWithActionsPending) {
  std::atomic<int> calls{0};
  RecordingListener slow("/p", {CCRUD::Update, CCRUD::Create});
  slow.onCall = [&](ResourceAction&) {
    calls.fetch_add(1);
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  };
  {
    HostWithUsers h;
    h.host->addResourceListener(&h.info, &slow);
    h.run(CCRUD::Create, "/p", h.adminSession);
    for (int i = 0; i < 200; ++i) h.run(CCRUD::Update, "/p", h.adminSession);
  }
  int after = calls.load();
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_EQ(after, calls.load());
}

}  // namespace
}  // namespace halvor::sim
