#pragma once

#include <string>

#include "kelo/controllers/KeloWsController.h"
#include "tavelabi/Resource.h"

namespace halvor::kelo {

// "/ws/meters/group?path=...": one binary halvor::protobuf::Meter for every change of a meter
// below the group at `path`, however deep. The first frame is empty on purpose: the client reads
// the group over REST and takes the changes from here.
class WsMeterGroup : public KeloWsController<WsMeterGroup, true> {
 public:
  static constexpr const char* kPath = "/ws/meters/group";
  // messageGenerator reads nothing but the changed meter: one rendering serves every client.
  static constexpr bool kMessageFromResourceOnly = true;

  // The decoded query parameter "path" followed by "/**"; RequestMissingQueryParameter without it.
  static std::string subscribedPattern(const web::HttpRequestPtr& req);

  void initialSetupAndMessage(const web::HttpRequestPtr& req,
                              const web::WebSocketConnectionPtr& conn,
                              std::string sessionId) override;
  // The changed meter as a Meter. It asks the host nothing, so no session check happens here and
  // a push costs one conversion.
  static void messageGenerator(const web::HttpRequestPtr& req, tavelabi::Resource& resource,
                               std::string sessionId, std::string& message,
                               const std::string& path);
};

}  // namespace halvor::kelo
