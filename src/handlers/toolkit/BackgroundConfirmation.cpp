#include "kelo/handlers/toolkit/BackgroundConfirmation.h"

#include <cerrno>
#include <ctime>
#include <stdexcept>
#include <utility>

#include "kelo/BackgroundTaskQueue.h"
#include "kelo/controllers/KeloFrame.h"
#include "kelo/web/HttpAppFramework.h"

namespace halvor::kelo {

void BackgroundConfirmation::inBackground(std::function<void()> task) {
  auto* queue = web::app().getPlugin<BackgroundTaskQueue>();
  if (queue == nullptr) {
    throw std::logic_error("The web configuration has no BackgroundTaskQueue");
  }
  queue->runInBackground(std::move(task));
}

void BackgroundConfirmation::start(Reply reply, std::chrono::milliseconds period, Pass pass) {
  inBackground(
      [reply = std::move(reply), period, pass = std::move(pass)] { run(reply, period, pass); });
}

void BackgroundConfirmation::start(Reply reply, std::chrono::milliseconds period, GiveUp giveUp,
                                   Pass pass) {
  inBackground([reply = std::move(reply), period, giveUp = std::move(giveUp),
                pass = std::move(pass)] { run(reply, period, giveUp, pass); });
}

void BackgroundConfirmation::startWithVerdict(Reply reply, std::chrono::milliseconds period,
                                              Verdict pass) {
  inBackground([reply = std::move(reply), period, pass = std::move(pass)] {
    runWithVerdict(reply, period, pass);
  });
}

void BackgroundConfirmation::startOnce(Reply reply, Answer answer) {
  inBackground(
      [reply = std::move(reply), answer = std::move(answer)] { answerOnce(reply, answer); });
}

void BackgroundConfirmation::run(const Reply& reply, std::chrono::milliseconds period,
                                 const Pass& pass) {
  runWithVerdict(reply, period, [&pass]() -> std::optional<int> {
    if (pass()) return 200;
    return std::nullopt;
  });
}

void BackgroundConfirmation::run(const Reply& reply, std::chrono::milliseconds period,
                                 const GiveUp& giveUp, const Pass& pass) {
  int pausesLeft = giveUp.retries;
  runWithVerdict(reply, period, [&]() -> std::optional<int> {
    if (pass()) return 200;
    if (pausesLeft-- > 0) return std::nullopt;
    reply.resp->setContentTypeCode(web::CT_TEXT_PLAIN);
    reply.resp->setBody(giveUp.text);
    return giveUp.status;
  });
}

void BackgroundConfirmation::answerOnce(const Reply& reply, const Answer& answer) {
  runWithVerdict(reply, std::chrono::milliseconds(0), [&]() -> std::optional<int> {
    web::HttpResponsePtr resp = reply.resp;
    answer(resp);
    return static_cast<int>(resp->statusCode());
  });
}

void BackgroundConfirmation::runWithVerdict(const Reply& reply, std::chrono::milliseconds period,
                                            const Verdict& pass) {
  try {
    std::optional<int> status = pass();
    while (!status) {
      pause(period);
      status = pass();
    }
    reply.resp->setStatusCode(*status);
  } catch (...) {
    KeloFrame::mapCurrentException(*reply.resp);
  }
  reply.callback(reply.resp);
}

void BackgroundConfirmation::pause(std::chrono::milliseconds period) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(period);
  timespec remaining{static_cast<time_t>(seconds.count()),
                     static_cast<long>(std::chrono::nanoseconds(period - seconds).count())};
  while (nanosleep(&remaining, &remaining) == -1 && errno == EINTR) {
  }
}

}  // namespace halvor::kelo
