#pragma once

#include <functional>
#include <string>

#include "kelo/web/HttpRequest.h"
#include "tavelabi/Resource.h"

namespace halvor::kelo {

// Renders one WebSocket message: `req` is the upgrade request, kept for the life of the
// subscription; `resource` is what the host reported (empty for a first message); `message` is
// the output; `path` is the resource path concerned. Endpoints implement it as a static
// member function named messageGenerator.
using MessageGenerator =
    std::function<void(const web::HttpRequestPtr& req, tavelabi::Resource& resource,
                       std::string sessionId, std::string& message, const std::string& path)>;

// The plain function that an endpoint's messageGenerator is.
using MessageGeneratorFunction = void (*)(const web::HttpRequestPtr& req,
                                          tavelabi::Resource& resource, std::string sessionId,
                                          std::string& message, const std::string& path);

// Whether endpoint T declares that its messageGenerator renders from the resource and the path
// alone (`static constexpr bool kMessageFromResourceOnly = true;`): it asks the host nothing,
// ignores the request and the session and leaves the resource as it is. One rendering of a
// change then serves every client of that generator.
template <class T>
constexpr bool messageFromResourceOnly() {
  if constexpr (requires { T::kMessageFromResourceOnly; }) {
    return T::kMessageFromResourceOnly;
  } else {
    return false;
  }
}

}  // namespace halvor::kelo
