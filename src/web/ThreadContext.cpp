#include "ThreadContext.h"

#include "ServerState.h"

namespace halvor::kelo::web {
namespace {

thread_local IoThread* tCurrentIo = nullptr;
thread_local const ServerState* tCurrentState = nullptr;

}  // namespace

void ThreadContext::enter(IoThread* io, const ServerState* state) {
  tCurrentIo = io;
  tCurrentState = state;
}

void ThreadContext::leave() {
  tCurrentIo = nullptr;
  tCurrentState = nullptr;
}

IoThread* ThreadContext::currentIoThread() { return tCurrentIo; }

const ServerState* ThreadContext::currentState() { return tCurrentState; }

void ThreadContext::applyCreationAdvices(const HttpResponsePtr& response) {
  if (tCurrentState != nullptr) tCurrentState->applyCreationAdvices(response);
}

}  // namespace halvor::kelo::web
