#pragma once

#include <string>

#include "kelo/controllers/KeloWsController.h"

namespace halvor::kelo {

// "/ws/resource?path=...": the resource at `path` (a glob is allowed for the subscription) as a
// binary halvor::protobuf::Resource, first as it is now, then on every Create and Update.
class WsResource : public KeloWsController<WsResource, true> {
 public:
  static constexpr const char* kPath = "/ws/resource";

  void initialSetupAndMessage(const web::HttpRequestPtr& req,
                              const web::WebSocketConnectionPtr& conn,
                              std::string sessionId) override;

  // Checks the session with a read that is not user activity, then serialises `resource`.
  static void messageGenerator(const web::HttpRequestPtr& req, tavelabi::Resource& resource,
                               std::string sessionId, std::string& message,
                               const std::string& path);
};

}  // namespace halvor::kelo
