#pragma once

#include <memory>

#include "kelo/web/HttpRequest.h"
#include "kelo/web/HttpResponse.h"
#include "kelo/web/HttpTypes.h"

namespace halvor::kelo::web {

// A controller that serves whole paths. One object serves all requests of its paths, from
// several I/O threads at once, so it keeps no per-request state.
class HttpSimpleControllerBase {
 public:
  virtual ~HttpSimpleControllerBase() = default;

  // Answers by calling `callback` once, now or later, from any thread.
  virtual void asyncHandleHttpRequest(const HttpRequestPtr& req, ResponseCallback&& callback) = 0;
};

using HttpSimpleControllerPtr = std::shared_ptr<HttpSimpleControllerBase>;

}  // namespace halvor::kelo::web
