#pragma once

#include <string>

#include "kelo/controllers/KeloWsEndpoint.h"

namespace halvor::kelo {

// "/ws/resource?path=...": the resource at `path` (a glob is allowed for the subscription) as a
// binary halvor::protobuf::Resource, first as it is now, then on every Create and Update.
class WsResource : public KeloWsEndpoint<WsResource> {
 public:
  static constexpr const char* kPath = "/ws/resource";

  // The decoded query parameter "path"; RequestMissingQueryParameter without it.
  static std::string subscribedPattern(const web::HttpRequestPtr& req);
  // The resource as it is now, read without counting as user activity.
  static tavelabi::Resource firstResource(const web::HttpRequestPtr& req,
                                          const std::string& sessionId, const std::string& path);
  // Checks the session, then serialises `resource`.
  static void messageGenerator(const web::HttpRequestPtr& req, tavelabi::Resource& resource,
                               std::string sessionId, std::string& message,
                               const std::string& path);
};

}  // namespace halvor::kelo
