#pragma once

#include <boost/thread/mutex.hpp>
#include <map>
#include <string>

#include "kelo/controllers/MessageGenerator.h"
#include "kelo/web/HttpRequest.h"
#include "kelo/web/Plugin.h"
#include "kelo/web/WebSocketConnection.h"

namespace halvor::kelo {

class WsListenerInstance;

// Owns one WsListenerInstance per distinct subscribed path and registers it with the host for
// exactly as long as it has clients. Lock order: listenersMutex here, then an instance's
// clientsMutex.
class ResourceListenerManager : public web::Plugin<ResourceListenerManager> {
 public:
  ResourceListenerManager() = default;
  ~ResourceListenerManager() override;
  ResourceListenerManager(const ResourceListenerManager&) = delete;
  ResourceListenerManager& operator=(const ResourceListenerManager&) = delete;

  void initAndStart(const Json::Value& config) override;
  void shutdown() override;

  // The plug-in's logger, set once by the beginning advice and copied into each new instance.
  void setLoggerId(const std::string& id);

  // Subscribes the connection to `path`. The first existing key whose glob matches `path` ends
  // the search; a new instance is made only when none matched, and the client then goes to the
  // instance of exactly `path` (std::out_of_range when a wider key matched). `resourceOnly` as in
  // ClientConnection.
  void addListenerAndClient(const web::HttpRequestPtr& req, const web::WebSocketConnectionPtr& conn,
                            MessageGenerator generator, std::string path, std::string sessionId,
                            bool resourceOnly = false);
  // Asks every instance to drop the connection; instances left without clients are unregistered
  // from the host and deleted.
  void removeClient(const web::WebSocketConnectionPtr& conn);
  // At shutdown: closes every client and unregisters every instance.
  void removeAllClients();
  std::map<std::string, WsListenerInstance*>& getListeners();
  // The number of clients of each subscribed path, taken under the lock: safe to call while
  // clients come and go, unlike a walk of getListeners().
  std::map<std::string, std::size_t> clientCounts();

 private:
  std::string loggerId;
  std::map<std::string, WsListenerInstance*> listeners;  // owned
  boost::mutex listenersMutex;
};

}  // namespace halvor::kelo
