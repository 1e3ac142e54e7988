#pragma once

#include <string>

#include "kelo/controllers/MessageGenerator.h"
#include "kelo/web/HttpRequest.h"
#include "kelo/web/WebSocketConnection.h"

namespace halvor::kelo {

// One subscribed client of a WsListenerInstance: a plain copyable record.
struct ClientConnection {
  // The client's key in its instance (WsListenerInstance::generateConnectionUuid).
  std::string uuid;
  // Handed to the generator on every push, so that a dead session shows up there.
  std::string sessionId;
  // The upgrade request, kept alive for the generator.
  web::HttpRequestPtr request;
  web::WebSocketConnectionPtr connection;
  MessageGenerator generator;
  // The generator renders from the resource and path alone (messageFromResourceOnly), so the
  // client may be sent the rendering made for another client of the same generator.
  bool resourceOnly = false;
};

}  // namespace halvor::kelo
