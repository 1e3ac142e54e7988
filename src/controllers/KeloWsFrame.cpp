#include "kelo/controllers/KeloWsFrame.h"

#include <boost/exception/diagnostic_information.hpp>
#include <optional>
#include <utility>

#include "kelo/Exceptions.h"
#include "kelo/KeloHost.h"
#include "kelo/KeloLog.h"
#include "kelo/handlers/toolkit/QueryParameters.h"
#include "kelo/handlers/ws/ResourceListenerManager.h"
#include "kelo/web/HttpAppFramework.h"
#include "tavelabi/Exceptions.h"

namespace halvor::kelo {

namespace {

ResourceListenerManager& listenerManager() {
  auto* manager = web::app().getPlugin<ResourceListenerManager>();
  if (manager == nullptr) {
    throw std::logic_error("The web configuration lists no ResourceListenerManager plug-in");
  }
  return *manager;
}

}  // namespace

std::string KeloWsFrame::sessionIdOf(const web::HttpRequestPtr& req) {
  std::string sessionId = req->getCookie(kSessionCookie);
  if (!sessionId.empty()) {
    return sessionId;
  }
  return QueryParameters::required(req, kSessionCookie);
}

void KeloWsFrame::openConnection(const web::HttpRequestPtr& req,
                                 const web::WebSocketConnectionPtr& conn,
                                 const std::function<void(const std::string& sessionId)>& setup) {
  try {
    setup(sessionIdOf(req));
  } catch (const tavelabi::NonExistentSessionException&) {
    KELO_LOG(ERROR, KeloHost::loggerId())
        << "Invalid Session ID: " << boost::current_exception_diagnostic_information();
    conn->shutdown(1011, "Invalid session ID.");
  } catch (...) {
    KELO_LOG(ERROR, KeloHost::loggerId())
        << "Error sending initial message: " << boost::current_exception_diagnostic_information();
  }
}

void KeloWsFrame::answerClose(const web::WebSocketConnectionPtr& conn) {
  KELO_LOG(DEBUG, KeloHost::loggerId()) << "Client requested close.";
  conn->shutdown(1000, "");
}

void KeloWsFrame::logClosed(const web::WebSocketConnectionPtr& conn) {
  KELO_LOG(DEBUG, KeloHost::loggerId())
      << "handleConnectionClosed() is called for " << conn->localAddr().toIp() << " -> "
      << conn->peerAddr().toIp();
}

void KeloWsFrame::subscribe(const web::HttpRequestPtr& req, const web::WebSocketConnectionPtr& conn,
                            MessageGenerator generator, const std::string& pattern,
                            const std::string& sessionId, bool resourceOnly) {
  listenerManager().addListenerAndClient(req, conn, std::move(generator), pattern, sessionId,
                                         resourceOnly);
}

void KeloWsFrame::removeClient(const web::WebSocketConnectionPtr& conn) {
  listenerManager().removeClient(conn);
}

}  // namespace halvor::kelo
