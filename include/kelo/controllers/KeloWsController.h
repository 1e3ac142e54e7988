#pragma once

#include <boost/exception/diagnostic_information.hpp>
#include <string>
#include <unordered_map>

#include "kelo/Exceptions.h"
#include "kelo/KeloLog.h"
#include "kelo/WebKeloInterface.h"
#include "kelo/common/EdUrlParser.h"
#include "kelo/controllers/KeloFrame.h"
#include "kelo/handlers/ws/ResourceListenerManager.h"
#include "kelo/web/HttpAppFramework.h"
#include "kelo/web/WebSocketControllerBase.h"
#include "tavelabi/Exceptions.h"

namespace halvor::kelo {

// What every WebSocket endpoint shares: the session identity of the upgrade request, the hand-over
// to the endpoint for its first message and subscription, the client's close, and the clean-up
// at the end. An endpoint T derives from KeloWsController<T, true> and implements
// initialSetupAndMessage. The object holds no per-connection state; one object serves all
// connections of its path, concurrently on the I/O threads.
template <class T, bool AutoCreation = true>
class KeloWsController : public web::WebSocketControllerBase {
 public:
  static constexpr const char* kSessionCookie = "SessionID";

  void handleNewMessage(const web::WebSocketConnectionPtr& conn, std::string&& message,
                        const web::WebSocketMessageType& type) override {
    (void)message;
    if (type == web::WebSocketMessageType::Close) {
      KELO_LOG(DEBUG, loggerId()) << "Client requested close.";
      conn->shutdown(1000, "");
    }
    // No other frame a client sends on a data endpoint has a meaning.
  }

  void handleNewConnection(const web::HttpRequestPtr& req,
                           const web::WebSocketConnectionPtr& conn) override {
    try {
      initialSetupAndMessage(req, conn, sessionIdOf(req));
    } catch (const tavelabi::NonExistentSessionException&) {
      KELO_LOG(ERROR, loggerId()) << "Invalid Session ID: "
                                  << boost::current_exception_diagnostic_information();
      conn->shutdown(1011, "Invalid session ID.");
    } catch (...) {
      // The connection stays open on purpose, without a subscription.
      KELO_LOG(ERROR, loggerId()) << "Error sending initial message: "
                                  << boost::current_exception_diagnostic_information();
    }
  }

  void handleConnectionClosed(const web::WebSocketConnectionPtr& conn) override {
    KELO_LOG(DEBUG, loggerId()) << "handleConnectionClosed() is called for "
                                << conn->localAddr().toIp() << " -> " << conn->peerAddr().toIp();
    cleanUpConnection(conn);
  }

  // Sends the endpoint's first message and subscribes the connection, or throws.
  virtual void initialSetupAndMessage(const web::HttpRequestPtr& req,
                                      const web::WebSocketConnectionPtr& conn,
                                      std::string sessionId) = 0;

  virtual void cleanUpConnection(const web::WebSocketConnectionPtr& conn) {
    listenerManager()->removeClient(conn);
  }

  // Serves T at "/1" + path, GET only, with the application's one T object.
  static void registerController(web::HttpAppFramework& application, const std::string& path) {
    application.registerWebSocketController(KeloFrame::versionedPath(path),
                                            application.sharedInstance<T>(), {web::Get});
  }

  // The cookie "SessionID"; when that is empty, the URL-decoded query parameter "SessionID";
  // otherwise RequestMissingQueryParameter. The query is not parsed when the cookie is there.
  static std::string sessionIdOf(const web::HttpRequestPtr& req) {
    std::string sessionId = req->getCookie(kSessionCookie);
    if (!sessionId.empty()) {
      return sessionId;
    }
    std::unordered_map<std::string, std::string> parameters;
    EdUrlParser::parseKeyValueMap(&parameters, req->query(), true);
    auto found = parameters.find(kSessionCookie);
    if (found == parameters.end()) {
      throw RequestMissingQueryParameter(kSessionCookie);
    }
    return EdUrlParser::urlDecode(found->second);
  }

 protected:
  static WebKeloInterface* keloInterface() { return web::app().getPlugin<WebKeloInterface>(); }
  static ResourceListenerManager* listenerManager() {
    return web::app().getPlugin<ResourceListenerManager>();
  }
  static std::string loggerId() {
    WebKeloInterface* keloInterface = KeloWsController::keloInterface();
    return keloInterface != nullptr && keloInterface->pluginInfo != nullptr
               ? keloInterface->pluginInfo->getLoggerId()
               : std::string();
  }
};

}  // namespace halvor::kelo
