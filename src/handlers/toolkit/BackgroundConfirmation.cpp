#include "kelo/handlers/toolkit/BackgroundConfirmation.h"

#include <cerrno>
#include <ctime>
#include <stdexcept>
#include <utility>

#include "kelo/BackgroundTaskQueue.h"
#include "kelo/controllers/KeloFrame.h"
#include "kelo/web/HttpAppFramework.h"

namespace halvor::kelo {

namespace {

BackgroundTaskQueue& backgroundQueue() {
  auto* queue = web::app().getPlugin<BackgroundTaskQueue>();
  if (queue == nullptr) {
    throw std::logic_error("The web configuration has no BackgroundTaskQueue");
  }
  return *queue;
}

}  // namespace

void BackgroundConfirmation::start(Reply reply, std::chrono::milliseconds period, Pass pass) {
  BackgroundTaskQueue& queue = backgroundQueue();
  queue.runInBackground(
      [reply = std::move(reply), period, pass = std::move(pass)] { run(reply, period, pass); });
}

void BackgroundConfirmation::startWithVerdict(Reply reply, std::chrono::milliseconds period,
                                              Verdict pass) {
  BackgroundTaskQueue& queue = backgroundQueue();
  queue.runInBackground([reply = std::move(reply), period, pass = std::move(pass)] {
    runWithVerdict(reply, period, pass);
  });
}

void BackgroundConfirmation::run(const Reply& reply, std::chrono::milliseconds period,
                                 const Pass& pass) {
  runWithVerdict(reply, period, [&pass]() -> std::optional<int> {
    if (pass()) return 200;
    return std::nullopt;
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
