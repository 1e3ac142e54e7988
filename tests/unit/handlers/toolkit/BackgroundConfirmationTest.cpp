#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "kelo/BackgroundTaskQueue.h"
#include "kelo/handlers/toolkit/BackgroundConfirmation.h"
#include "support/DeferredHandlerTest.h"
#include "support/Requests.h"
#include "tavelabi/Exceptions.h"

namespace halvor::kelo {
namespace {

using std::chrono::milliseconds;

// What the callback got, and on which thread, waited for across threads.
class Answer {
 public:
  web::ResponseCallback callback() {
    return [this](const web::HttpResponsePtr& resp) {
      std::lock_guard lock(mutex_);
      response_ = resp;
      thread_ = std::this_thread::get_id();
      ++calls_;
      answered_.notify_all();
    };
  }
  web::HttpResponsePtr wait() {
    std::unique_lock lock(mutex_);
    answered_.wait_for(lock, std::chrono::seconds(10), [this] { return calls_ > 0; });
    return response_;
  }
  int calls() {
    std::lock_guard lock(mutex_);
    return calls_;
  }
  std::thread::id thread() {
    std::lock_guard lock(mutex_);
    return thread_;
  }

 private:
  std::mutex mutex_;
  std::condition_variable answered_;
  web::HttpResponsePtr response_;
  std::thread::id thread_;
  int calls_ = 0;
};

BackgroundConfirmation::Reply replyTo(Answer& answer) {
  return {test::makeRequest(web::Put, "/1/api/x", "", "{}"), web::HttpResponse::newHttpResponse(),
          answer.callback()};
}

TEST(BackgroundConfirmationTest, PassesUntilConfirmedWaitingThePeriodBetweenThenAnswers200) {
  Answer answer;
  BackgroundConfirmation::Reply reply = replyTo(answer);
  reply.resp->setStatusCode(404);
  reply.resp->setBody("kept");
  int passes = 0;
  const auto start = std::chrono::steady_clock::now();
  BackgroundConfirmation::run(reply, milliseconds(50), [&passes] { return ++passes == 3; });
  const auto elapsed = std::chrono::steady_clock::now() - start;
  EXPECT_EQ(passes, 3);
  EXPECT_GE(elapsed, milliseconds(100));  // two waits between three passes
  ASSERT_EQ(answer.calls(), 1);
  EXPECT_EQ(answer.wait()->statusCode(), web::k200OK);
  EXPECT_EQ(answer.wait()->body(), "kept");
}

TEST(BackgroundConfirmationTest, AConfirmedFirstPassAnswersWithoutWaiting) {
  Answer answer;
  const auto start = std::chrono::steady_clock::now();
  BackgroundConfirmation::run(replyTo(answer), milliseconds(5000), [] { return true; });
  EXPECT_LT(std::chrono::steady_clock::now() - start, milliseconds(1000));
  EXPECT_EQ(answer.wait()->statusCode(), web::k200OK);
}

TEST(BackgroundConfirmationTest, FailuresAreMappedAsTheFrameMapsThem) {
  {
    Answer answer;
    BackgroundConfirmation::run(replyTo(answer), milliseconds(1), []() -> bool {
      throw tavelabi::NonExistentSessionException("gone");
    });
    EXPECT_EQ(answer.wait()->statusCode(), 440);
    EXPECT_TRUE(answer.wait()->ifCloseConnection());
  }
  {
    Answer answer;
    BackgroundConfirmation::run(replyTo(answer), milliseconds(1),
                                []() -> bool { throw tavelabi::AuthorizationFailure("no"); });
    EXPECT_EQ(answer.wait()->statusCode(), 403);
  }
  {
    Answer answer;
    BackgroundConfirmation::run(replyTo(answer), milliseconds(1),
                                []() -> bool { throw std::out_of_range("map::at"); });
    const web::HttpResponsePtr resp = answer.wait();
    EXPECT_EQ(resp->statusCode(), 500);
    EXPECT_EQ(resp->contentType(), web::CT_TEXT_PLAIN);
    EXPECT_NE(resp->body().find("map::at"), std::string::npos) << resp->body();
    EXPECT_EQ(answer.calls(), 1);
  }
}

TEST(BackgroundConfirmationTest, StartRunsTheLoopOnTheBackgroundQueueAndReturnsAtOnce) {
  BackgroundTaskQueue& queue = test::startBackgroundQueue(1, "confirmTest");

  Answer answer;
  std::atomic<int> passes{0};
  std::atomic<bool> release{false};
  BackgroundConfirmation::start(replyTo(answer), milliseconds(10), [&] {
    ++passes;
    return release.load();
  });
  // The caller is free while the loop waits on the queue's thread.
  EXPECT_EQ(answer.calls(), 0);
  while (passes.load() < 2) std::this_thread::sleep_for(milliseconds(5));
  EXPECT_EQ(answer.calls(), 0);
  release = true;
  EXPECT_EQ(answer.wait()->statusCode(), web::k200OK);
  EXPECT_NE(answer.thread(), std::this_thread::get_id());
  queue.shutdown();
}

BackgroundConfirmation::GiveUp giveUpAfter(int retries) { return {retries, 500, "Gave up."}; }

TEST(BackgroundConfirmationTest, TheBoundedLoopAnswers200WhenAPassConfirmsWithinTheRetries) {
  Answer answer;
  BackgroundConfirmation::Reply reply = replyTo(answer);
  reply.resp->setContentTypeCode(web::CT_APPLICATION_JSON);
  int passes = 0;
  BackgroundConfirmation::run(reply, milliseconds(1), giveUpAfter(3),
                              [&passes] { return ++passes == 4; });
  EXPECT_EQ(passes, 4);
  ASSERT_EQ(answer.calls(), 1);
  EXPECT_EQ(answer.wait()->statusCode(), web::k200OK);
  EXPECT_EQ(answer.wait()->contentType(), web::CT_APPLICATION_JSON);
  EXPECT_TRUE(answer.wait()->body().empty());
}

TEST(BackgroundConfirmationTest, TheBoundedLoopGivesUpAfterItsRetriesWithTheStatusAndPlainText) {
  Answer answer;
  BackgroundConfirmation::Reply reply = replyTo(answer);
  reply.resp->setContentTypeCode(web::CT_APPLICATION_JSON);
  int passes = 0;
  const auto start = std::chrono::steady_clock::now();
  BackgroundConfirmation::run(reply, milliseconds(20), giveUpAfter(3), [&passes] {
    ++passes;
    return false;
  });
  // One pass, then one after each of the three waits.
  EXPECT_EQ(passes, 4);
  EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds(60));
  ASSERT_EQ(answer.calls(), 1);
  const web::HttpResponsePtr resp = answer.wait();
  EXPECT_EQ(resp->statusCode(), 500);
  EXPECT_EQ(resp->body(), "Gave up.");
  EXPECT_EQ(resp->contentType(), web::CT_TEXT_PLAIN);
  EXPECT_FALSE(resp->ifCloseConnection());
}

TEST(BackgroundConfirmationTest, TheBoundedLoopMapsAFailedPassAsTheFrameDoes) {
  Answer answer;
  int passes = 0;
  BackgroundConfirmation::run(replyTo(answer), milliseconds(1), giveUpAfter(5),
                              [&passes]() -> bool {
                                if (++passes == 2) throw tavelabi::AuthorizationFailure("refused");
                                return false;
                              });
  EXPECT_EQ(passes, 2);
  ASSERT_EQ(answer.calls(), 1);
  EXPECT_EQ(answer.wait()->statusCode(), 403);
  EXPECT_TRUE(answer.wait()->ifCloseConnection());
}

TEST(BackgroundConfirmationTest, AnAnswerOnceSetsItsOwnStatusAndBodyAndIsSentOnce) {
  Answer answer;
  BackgroundConfirmation::answerOnce(replyTo(answer), [](web::HttpResponsePtr& resp) {
    resp->setStatusCode(web::k500InternalServerError);
    resp->setBody("platform unreachable");
  });
  const web::HttpResponsePtr resp = answer.wait();
  EXPECT_EQ(resp->statusCode(), 500);
  EXPECT_EQ(std::string(resp->body()), "platform unreachable");
  EXPECT_EQ(answer.calls(), 1);
}

TEST(BackgroundConfirmationTest, AnAnswerOnceThatThrowsIsMappedAsTheFrameMapsIt) {
  Answer answer;
  BackgroundConfirmation::answerOnce(replyTo(answer), [](web::HttpResponsePtr&) {
    throw tavelabi::NonExistentSessionException("gone");
  });
  EXPECT_EQ(answer.wait()->statusCode(), 440);
  EXPECT_EQ(answer.calls(), 1);
}

}  // namespace
}  // namespace halvor::kelo
