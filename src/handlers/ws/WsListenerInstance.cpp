#include "kelo/handlers/ws/WsListenerInstance.h"

#include <boost/exception/diagnostic_information.hpp>
#include <mutex>
#include <shared_mutex>
#include <sstream>
#include <utility>

#include "kelo/HostPaths.h"
#include "kelo/KeloHost.h"
#include "kelo/KeloLog.h"
#include "kelo/metrics/ServerHealthMetrics.h"
#include "kelo/web/HttpAppFramework.h"
#include "tavelabi/ITavel.h"

namespace halvor::kelo {

WsListenerInstance::WsListenerInstance(const std::string& path, std::string loggerId)
    : tavelabi::AbstractResourceListener(path, {tavelabi::CCRUD::Create, tavelabi::CCRUD::Update}),
      loggerId(std::move(loggerId)) {}

WsListenerInstance::operator std::string() {
  std::ostringstream text;
  text << getPattern();
  return text.str();
}

std::string WsListenerInstance::generateConnectionUuid(const web::WebSocketConnectionPtr& conn) {
  return conn->peerAddr().toIpPort() + getPattern();
}

tavelabi::ResourceValue::Map WsListenerInstance::readConnectivities() {
  tavelabi::IPluginInfo* info = KeloHost::pluginInfo();
  tavelabi::ResourceAction read(tavelabi::CCRUD::Read, HostPaths::kConnectivities, info,
                                info->getSessionId());
  const tavelabi::Resource answer = KeloHost::tavel()->processResourceAction(read);
  return answer.values.at("value").getMapValue();
}

void WsListenerInstance::processResourceListener(const tavelabi::TimePoint& /*now*/,
                                                 tavelabi::ResourceAction& action) {
  std::shared_lock<boost::shared_mutex> lock(clientsMutex);
  Renderings renderings;
  for (const auto& entry : clients) {
    // The record is read in place: the shared lock keeps it from changing under the fan-out.
    const ClientConnection& client = entry.second;
    const std::string ip = client.connection->peerAddr().toIp();
    // One read per client and change: a heartbeat that lapsed in the middle of a fan-out counts.
    const tavelabi::ResourceValue::Map connectivities = readConnectivities();
    if (connectivities.count(ip) == 0) {
      KELO_LOG(ERROR, loggerId) << "Unable to push " << action.path << " to client " << ip
                                << " - network connection issue";
      ServerHealthMetrics::instance()->pushSkipped();
    } else if (sharedGenerator(client) != nullptr) {
      sendShared(client, action, renderings);
    } else {
      sendWebsocket(client, action);
    }
  }
}

MessageGeneratorFunction WsListenerInstance::sharedGenerator(const ClientConnection& client) {
  if (!client.resourceOnly) {
    return nullptr;
  }
  const MessageGeneratorFunction* function = client.generator.target<MessageGeneratorFunction>();
  return function == nullptr ? nullptr : *function;
}

const WsListenerInstance::Rendering& WsListenerInstance::renderingOf(
    const ClientConnection& client, tavelabi::ResourceAction& action, Renderings& renderings) {
  const MessageGeneratorFunction generator = sharedGenerator(client);
  for (const Rendering& rendering : renderings) {
    if (rendering.generator == generator) {
      return rendering;
    }
  }
  Rendering made{generator, nullptr, nullptr};
  try {
    // Made with the first client's request and session, which the generator ignores.
    auto message = std::make_shared<std::string>();
    generator(client.request, action.resource, client.sessionId, *message, action.path);
    made.message = std::move(message);
  } catch (...) {
    made.failure = std::current_exception();
  }
  renderings.push_back(std::move(made));
  return renderings.back();
}

void WsListenerInstance::sendShared(const ClientConnection& client,
                                    tavelabi::ResourceAction& action, Renderings& renderings) {
  try {
    const Rendering& rendering = renderingOf(client, action, renderings);
    if (rendering.failure) {
      std::rethrow_exception(rendering.failure);
    }
    if (client.connection->connected()) {
      client.connection->sendShared(rendering.message, web::WebSocketMessageType::Binary);
      ServerHealthMetrics::instance()->pushSent();
    }
  } catch (...) {
    KELO_LOG(ERROR, loggerId) << "Unable to push " << action.path << " to client "
                              << client.connection->peerAddr().toIp() << " - "
                              << boost::current_exception_diagnostic_information();
  }
}

void WsListenerInstance::sendWebsocket(const ClientConnection& client,
                                       tavelabi::ResourceAction& action) {
  try {
    std::string message;
    // The generator takes the session by value: its own copy, as before.
    client.generator(client.request, action.resource, client.sessionId, message, action.path);
    if (client.connection->connected()) {
      client.connection->send(message, web::WebSocketMessageType::Binary);
      ServerHealthMetrics::instance()->pushSent();
    }
  } catch (...) {
    // The client stays subscribed and the next one is served.
    KELO_LOG(ERROR, loggerId) << "Unable to push " << action.path << " to client "
                              << client.connection->peerAddr().toIp() << " - "
                              << boost::current_exception_diagnostic_information();
  }
}

void WsListenerInstance::removeClient(const web::WebSocketConnectionPtr& conn) {
  std::unique_lock<boost::shared_mutex> lock(clientsMutex);
  const std::string key = generateConnectionUuid(conn);
  auto found = clients.find(key);
  if (found == clients.end()) {
    KELO_LOG(ERROR, loggerId) << "Could not remove. Missing client with uuid " << key << ".";
    return;
  }
  found->second.connection->shutdown(1000, "");
  clients.erase(found);
}

void WsListenerInstance::removeAllClients() {
  std::unique_lock<boost::shared_mutex> lock(clientsMutex);
  for (const auto& entry : clients) {
    entry.second.connection->shutdown(1000, "");
  }
  clients.clear();
}

void WsListenerInstance::addNewClient(const web::HttpRequestPtr& req,
                                      const web::WebSocketConnectionPtr& conn,
                                      std::string sessionId, MessageGenerator generator,
                                      bool resourceOnly) {
  std::unique_lock<boost::shared_mutex> lock(clientsMutex);
  std::string key = generateConnectionUuid(conn);
  ClientConnection client{key, std::move(sessionId), req, conn, std::move(generator), resourceOnly};
  clients.emplace(std::move(key), std::move(client));
}

std::map<std::string, ClientConnection> WsListenerInstance::getClients() {
  std::shared_lock<boost::shared_mutex> lock(clientsMutex);
  return clients;
}

bool WsListenerInstance::hasClients() {
  std::shared_lock<boost::shared_mutex> lock(clientsMutex);
  return !clients.empty();
}

}  // namespace halvor::kelo
