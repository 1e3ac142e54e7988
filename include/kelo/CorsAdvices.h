#pragma once

#include <string>

#include "kelo/web/HttpAppFramework.h"

namespace halvor::kelo {

// How the server treats other origins and OPTIONS requests.
class CorsAdvices {
 public:
  // With bypassCors, every response lets `corsOrigin` in with credentials; without, it does
  // nothing.
  static web::HttpAppFramework::ResponseCreationAdvice responseCreationAdvice(
      bool bypassCors, const std::string& corsOrigin);

  // Answers every OPTIONS request at once with the allowed methods and headers, without session
  // and without host; every other request goes on.
  static void preRoutingAdvice(const web::HttpRequestPtr& req, web::AdviceCallback&& callback,
                               web::AdviceChainCallback&& chainCallback);
};

}  // namespace halvor::kelo
