#include "kelo/handlers/toolkit/BackgroundConfirmation.h"

#include <cerrno>
#include <ctime>
#include <stdexcept>
#include <utility>

#include "kelo/BackgroundTaskQueue.h"
#include "kelo/controllers/KeloFrame.h"
#include "kelo/web/HttpAppFramework.h"

namespace halvor::kelo {

void BackgroundConfirmation::start(Reply reply, std::chrono::milliseconds period, Pass pass) {
  auto* queue = web::app().getPlugin<BackgroundTaskQueue>();
  if (queue == nullptr) {
    throw std::logic_error("The web configuration has no BackgroundTaskQueue");
  }
  queue->runInBackground(
      [reply = std::move(reply), period, pass = std::move(pass)] { run(reply, period, pass); });
}

void BackgroundConfirmation::startOnce(Reply reply, Answer answer) {
  auto* queue = web::app().getPlugin<BackgroundTaskQueue>();
  if (queue == nullptr) {
    throw std::logic_error("The web configuration has no BackgroundTaskQueue");
  }
  queue->runInBackground(
      [reply = std::move(reply), answer = std::move(answer)] { answerOnce(reply, answer); });
}

void BackgroundConfirmation::answerOnce(const Reply& reply, const Answer& answer) {
  web::HttpResponsePtr resp = reply.resp;
  try {
    answer(resp);
  } catch (...) {
    KeloFrame::mapCurrentException(*reply.resp);
  }
  reply.callback(reply.resp);
}

void BackgroundConfirmation::run(const Reply& reply, std::chrono::milliseconds period,
                                 const Pass& pass) {
  try {
    while (!pass()) {
      pause(period);
    }
    reply.resp->setStatusCode(200);
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

void BackgroundConfirmation::start(Reply reply, std::chrono::milliseconds period, GiveUp giveUp,
                                   Pass pass) {
  auto* queue = web::app().getPlugin<BackgroundTaskQueue>();
  if (queue == nullptr) {
    throw std::logic_error("The web configuration has no BackgroundTaskQueue");
  }
  queue->runInBackground([reply = std::move(reply), period, giveUp = std::move(giveUp),
                          pass = std::move(pass)] { run(reply, period, giveUp, pass); });
}

void BackgroundConfirmation::run(const Reply& reply, std::chrono::milliseconds period,
                                 const GiveUp& giveUp, const Pass& pass) {
  try {
    int pauses = 0;
    bool confirmed = pass();
    while (!confirmed && pauses < giveUp.retries) {
      ++pauses;
      pause(period);
      confirmed = pass();
    }
    if (confirmed) {
      reply.resp->setStatusCode(200);
    } else {
      reply.resp->setContentTypeCode(web::CT_TEXT_PLAIN);
      reply.resp->setBody(giveUp.text);
      reply.resp->setStatusCode(giveUp.status);
    }
  } catch (...) {
    KeloFrame::mapCurrentException(*reply.resp);
  }
  reply.callback(reply.resp);
}

}  // namespace halvor::kelo
