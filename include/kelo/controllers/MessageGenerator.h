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

}  // namespace halvor::kelo
