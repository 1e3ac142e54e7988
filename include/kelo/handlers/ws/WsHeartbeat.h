#pragma once

#include <string>

#include "kelo/controllers/KeloWsController.h"

namespace halvor::kelo {

// "/ws/ping": every message a client sends here refills the count of its IP address in the
// connectivity table and is answered "pong" (Text). Pushes go only to addresses with a count;
// Kelo::checkHeartbeat takes one off each second. No subscription, no message generator.
class WsHeartbeat : public KeloWsController<WsHeartbeat, true> {
 public:
  static constexpr const char* kPath = "/ws/ping";
  static constexpr int32_t kHeartbeatCount = 5;

  void initialSetupAndMessage(const web::HttpRequestPtr& req,
                              const web::WebSocketConnectionPtr& conn,
                              std::string sessionId) override;
  // Any frame, a close included, counts as a ping.
  void handleNewMessage(const web::WebSocketConnectionPtr& conn, std::string&& message,
                        const web::WebSocketMessageType& type) override;
  // Read, change and write of the whole table without a lock: an overlapping tick or ping may
  // lose one update, which costs at most one interval.
  void extendHeartbeatCount(std::string ip);
};

}  // namespace halvor::kelo
