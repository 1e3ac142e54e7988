#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "kelo/web/HttpRequest.h"
#include "kelo/web/HttpResponse.h"
#include "kelo/web/HttpTypes.h"

namespace halvor::kelo {

// A write that the host carries out later is answered only when the host reports it done. A
// handler of the deferred form (KELO_DEFERRED_ROUTE) writes, then hands its request, response and
// callback to start(); the I/O thread is free at once. A task on the background queue runs the
// handler's pass, which reads the host and says whether everything is confirmed, and waits
// `period` between passes, with no limit on their number. When a pass says yes the response
// gets status 200 (its body as the handler left it) and goes out through the callback. A pass
// that throws ends the loop: a dead session is 440, a refused right 403, anything else 500 with
// the diagnostic text, exactly as the frame maps a handler's failure.
class BackgroundConfirmation {
 public:
  BackgroundConfirmation() = delete;

  // One pass over the host: true when every write is confirmed. Runs on the background queue.
  using Pass = std::function<bool()>;
  // A pass that also decides the answer's status: empty while the host is not done, otherwise
  // the status to answer with (the pass has left the body it wants on the response). For the
  // waits whose end may be a failure that is not an exception (a 500 with the host's text).
  using Verdict = std::function<std::optional<int>()>;

  struct Reply {
    web::HttpRequestPtr req;
    web::HttpResponsePtr resp;
    web::ResponseCallback callback;
  };

  // The end of a wait that is not confirmed in time: after `retries` pauses, a pass that still
  // says no ends the loop, and the answer is `status` with `text` as plain text.
  struct GiveUp {
    int retries;
    int status;
    std::string text;
  };

  // A single slow host call answered later: it sets the response's status and body itself.
  using Answer = std::function<void(web::HttpResponsePtr& resp)>;

  // Each start hands its loop to the BackgroundTaskQueue plug-in and throws std::logic_error when
  // the application has no such plug-in (before anything is handed on, so the frame answers 500).
  // Every form is the verdict loop: the others are verdicts made from their passes.
  static void start(Reply reply, std::chrono::milliseconds period, Pass pass);
  // The bounded form: at most giveUp.retries pauses.
  static void start(Reply reply, std::chrono::milliseconds period, GiveUp giveUp, Pass pass);
  // A pass that decides the status; a thrown failure is mapped as above.
  static void startWithVerdict(Reply reply, std::chrono::milliseconds period, Verdict pass);
  // One pass, no wait: `answer` runs once on the background queue.
  static void startOnce(Reply reply, Answer answer);

  // The loops themselves, on the calling thread: what the queued tasks run.
  static void run(const Reply& reply, std::chrono::milliseconds period, const Pass& pass);
  static void run(const Reply& reply, std::chrono::milliseconds period, const GiveUp& giveUp,
                  const Pass& pass);
  static void runWithVerdict(const Reply& reply, std::chrono::milliseconds period,
                             const Verdict& pass);
  static void answerOnce(const Reply& reply, const Answer& answer);

  // Waits `period`, resuming after a signal until the whole time has passed.
  static void pause(std::chrono::milliseconds period);

 private:
  static void inBackground(std::function<void()> task);
};

}  // namespace halvor::kelo
