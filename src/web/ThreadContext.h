#pragma once

#include "kelo/web/HttpTypes.h"

namespace halvor::kelo::web {

class IoThread;
class ServerState;

// What the current thread serves: set on each I/O thread for its whole life, so that
// HttpResponse::newHttpResponse() can apply the right application's advices and a response
// callback can tell whether it runs on its connection's thread.
class ThreadContext {
 public:
  static void enter(IoThread* io, const ServerState* state);
  static void leave();
  static IoThread* currentIoThread();
  static const ServerState* currentState();
  // Runs the creation advices of the current thread's application on `response`, if any.
  static void applyCreationAdvices(const HttpResponsePtr& response);
};

}  // namespace halvor::kelo::web
