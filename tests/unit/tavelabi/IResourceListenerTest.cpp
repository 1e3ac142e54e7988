#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "tavelabi/IResourceListener.h"

namespace halvor::tavelabi {
namespace {

const std::vector<CCRUD> kAllVerbs = {CCRUD::Command, CCRUD::Create, CCRUD::Read,
                                      CCRUD::Update,  CCRUD::Delete, CCRUD::None};

// Records what processResourceListener saw.
class RecordingListener : public AbstractResourceListener {
 public:
  using AbstractResourceListener::AbstractResourceListener;

  operator std::string() override { return "RecordingListener " + getPattern(); }

  void processResourceListener(const TimePoint& now, ResourceAction& action) override {
    ++calls;
    seenHopCount = action.hopCount;
    seenPath = action.path;
    seenTime = now;
    seenAction = &action;
  }

  int calls = 0;
  uint32_t seenHopCount = 0;
  std::string seenPath;
  TimePoint seenTime;
  const ResourceAction* seenAction = nullptr;
};

TEST(IResourceListenerTest, NotifyRaisesHopCountByOneBeforeProcessing) {
  RecordingListener listener("/presets/**", {CCRUD::Update});
  ResourceAction action(CCRUD::Update, "/presets/active", nullptr, "s");
  const TimePoint now(std::chrono::nanoseconds(123456));

  listener.notifyAction(now, action);
  EXPECT_EQ(listener.calls, 1);
  EXPECT_EQ(listener.seenHopCount, 1U);
  EXPECT_EQ(action.hopCount, 1U);
  EXPECT_EQ(listener.seenAction, &action);
  EXPECT_EQ(listener.seenPath, "/presets/active");
  EXPECT_EQ(listener.seenTime, now);

  action.hopCount = 41;
  listener.notifyAction(now, action);
  EXPECT_EQ(listener.calls, 2);
  EXPECT_EQ(listener.seenHopCount, 42U);
  EXPECT_EQ(action.hopCount, 42U);
}

TEST(IResourceListenerTest, HasActionTestsMembership) {
  RecordingListener listener("/a", {CCRUD::Create, CCRUD::Update});
  for (CCRUD verb : kAllVerbs) {
    const bool wanted = verb == CCRUD::Create || verb == CCRUD::Update;
    EXPECT_EQ(listener.hasAction(verb), wanted) << toString(verb);
  }
}

TEST(IResourceListenerTest, EmptySetHasNoVerb) {
  RecordingListener listener("/a", {});
  for (CCRUD verb : kAllVerbs) EXPECT_FALSE(listener.hasAction(verb)) << toString(verb);
}

TEST(IResourceListenerTest, PatternAndMatcher) {
  RecordingListener listener("/meters/*", {CCRUD::Update});
  EXPECT_EQ(listener.getPattern(), "/meters/*");
  GlobMatcher* matcher = listener.getMatcher();
  ASSERT_NE(matcher, nullptr);
  EXPECT_EQ(matcher, listener.getMatcher());
  EXPECT_EQ(matcher->getPattern(), "/meters/*");
  EXPECT_TRUE(matcher->match("/meters/power"));
  EXPECT_FALSE(matcher->match("/meters/power/peak"));
  EXPECT_EQ(std::string(listener), "RecordingListener /meters/*");
}

TEST(IResourceListenerTest, DeletedThroughInterfacePointer) {
  IResourceListener* listener = new RecordingListener("/x", {CCRUD::Read});
  EXPECT_TRUE(listener->hasAction(CCRUD::Read));
  delete listener;  // the sanitizer build reports a leak or a mismatch if this goes wrong
}

}  // namespace
}  // namespace halvor::tavelabi
