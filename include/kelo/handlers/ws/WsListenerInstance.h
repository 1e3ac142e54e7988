#pragma once

#include <boost/thread/shared_mutex.hpp>
#include <exception>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "kelo/controllers/MessageGenerator.h"
#include "kelo/handlers/ws/ClientConnection.h"
#include "kelo/web/HttpRequest.h"
#include "kelo/web/WebSocketConnection.h"
#include "tavelabi/IResourceListener.h"
#include "tavelabi/ResourceAction.h"
#include "tavelabi/Types.h"

namespace halvor::kelo {

// The host listener of one subscribed path (a glob is allowed) and the clients of that path.
// The host calls processResourceListener on its own thread for every Create and Update that
// matches; each client then gets its own rendering, made with its own session, as long as its
// address is in the connectivity table. Clients whose generator renders from the resource alone
// (ClientConnection::resourceOnly) share one rendering per change and generator instead.
class WsListenerInstance : public tavelabi::AbstractResourceListener {
 public:
  WsListenerInstance(const std::string& path, std::string loggerId);

  operator std::string() override;  // NOLINT(google-explicit-constructor)
  void processResourceListener(const tavelabi::TimePoint& now,
                               tavelabi::ResourceAction& action) override;

  // The peer's address and port immediately followed by this instance's pattern.
  std::string generateConnectionUuid(const web::WebSocketConnectionPtr& conn);
  // Renders and sends one push to one client; logs and swallows every failure.
  void sendWebsocket(const ClientConnection& client, tavelabi::ResourceAction& action);
  // Shuts the client's connection down (1000) and forgets it, or logs that it is not here.
  void removeClient(const web::WebSocketConnectionPtr& conn);
  void removeAllClients();
  // A client whose key is here already keeps its old entry.
  void addNewClient(const web::HttpRequestPtr& req, const web::WebSocketConnectionPtr& conn,
                    std::string sessionId, MessageGenerator generator, bool resourceOnly = false);
  std::map<std::string, ClientConnection> getClients();
  bool hasClients();

 private:
  // What one resource-only generator made of one change: the message, or what it threw.
  struct Rendering {
    MessageGeneratorFunction generator;
    std::shared_ptr<const std::string> message;
    std::exception_ptr failure;
  };
  // The renderings of one change, made on first need.
  using Renderings = std::vector<Rendering>;

  // sendWebsocket for a client whose generator renders from the resource alone: the rendering is
  // made for the first client that needs it and handed to the next ones; a failure is logged for
  // each of them as their own call would have been.
  void sendShared(const ClientConnection& client, tavelabi::ResourceAction& action,
                  Renderings& renderings);
  static const Rendering& renderingOf(const ClientConnection& client,
                                      tavelabi::ResourceAction& action, Renderings& renderings);
  // The generator's plain function when the client may share renderings, otherwise nullptr.
  static MessageGeneratorFunction sharedGenerator(const ClientConnection& client);

  // The addresses whose heartbeat is alive, read from the host under the plug-in's session.
  static tavelabi::ResourceValue::Map readConnectivities();

  boost::shared_mutex clientsMutex;
  std::string loggerId;
  std::map<std::string, ClientConnection> clients;
};

}  // namespace halvor::kelo
