#pragma once

#include <functional>
#include <string>

#include "kelo/controllers/MessageGenerator.h"
#include "kelo/web/HttpRequest.h"
#include "kelo/web/WebSocketConnection.h"

namespace halvor::kelo {

// The steps of every WebSocket endpoint that need no knowledge of the endpoint: the session
// identity of the upgrade request, the outcome of the first step, the client's close, and the
// subscriptions kept by the ResourceListenerManager plug-in.
class KeloWsFrame {
 public:
  KeloWsFrame() = delete;

  static constexpr const char* kSessionCookie = "SessionID";

  // The cookie "SessionID"; when that is empty, the URL-decoded query parameter "SessionID";
  // otherwise RequestMissingQueryParameter. The query is not parsed when the cookie is there.
  static std::string sessionIdOf(const web::HttpRequestPtr& req);
  // Runs `setup(sessionId)` for a new connection. A session the host does not know closes the
  // connection with 1011 "Invalid session ID."; any other failure is logged and leaves the
  // connection open on purpose, without a subscription.
  static void openConnection(const web::HttpRequestPtr& req,
                             const web::WebSocketConnectionPtr& conn,
                             const std::function<void(const std::string& sessionId)>& setup);
  // The client's close is answered with 1000 and no reason, whatever code it carried.
  static void answerClose(const web::WebSocketConnectionPtr& conn);
  static void logClosed(const web::WebSocketConnectionPtr& conn);

  // Every change of a resource matching `pattern` is rendered by `generator` and sent to `conn`.
  // `resourceOnly`: the generator renders from the resource and path alone (see
  // messageFromResourceOnly), so one rendering of a change may serve several clients.
  static void subscribe(const web::HttpRequestPtr& req, const web::WebSocketConnectionPtr& conn,
                        MessageGenerator generator, const std::string& pattern,
                        const std::string& sessionId, bool resourceOnly = false);
  static void removeClient(const web::WebSocketConnectionPtr& conn);
};

}  // namespace halvor::kelo
