#pragma once

#include <chrono>
#include <functional>
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

  struct Reply {
    web::HttpRequestPtr req;
    web::HttpResponsePtr resp;
    web::ResponseCallback callback;
  };

  // Hands the loop to the BackgroundTaskQueue plug-in. Throws std::logic_error when the
  // application has no such plug-in (before anything is handed on, so the frame answers 500).
  static void start(Reply reply, std::chrono::milliseconds period, Pass pass);

  // The loop itself, on the calling thread: what the queued task runs.
  static void run(const Reply& reply, std::chrono::milliseconds period, const Pass& pass);

  // One host action answered later: runs `answer` once on the background queue; it sets the
  // response's status and body itself. A failure is mapped as the frame maps it; either way the
  // response then goes out through the callback. Throws std::logic_error as start() does.
  using Answer = std::function<void(web::HttpResponsePtr& resp)>;
  static void startOnce(Reply reply, Answer answer);
  // What the queued task of startOnce runs, on the calling thread.
  static void answerOnce(const Reply& reply, const Answer& answer);

  // Waits `period`, resuming after a signal until the whole time has passed.
  static void pause(std::chrono::milliseconds period);

  // The end of a wait that is not confirmed in time: after `retries` pauses, a pass that still
  // says no ends the loop, and the answer is `status` with `text` as plain text.
  struct GiveUp {
    int retries;
    int status;
    std::string text;
  };

  // The bounded form of start(): the same loop, at most giveUp.retries pauses.
  static void start(Reply reply, std::chrono::milliseconds period, GiveUp giveUp, Pass pass);

  // The bounded loop on the calling thread. A confirmation answers 200 as run() does.
  static void run(const Reply& reply, std::chrono::milliseconds period, const GiveUp& giveUp,
                  const Pass& pass);
};

}  // namespace halvor::kelo
