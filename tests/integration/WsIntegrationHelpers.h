#pragma once

#include <json/json.h>

#include <chrono>
#include <fstream>
#include <memory>
#include <optional>
#include <string>

#include "halvor/protobuf/Resource.pb.h"
#include "kelo/handlers/ws/ResourceListenerManager.h"
#include "kelo/web/HttpAppFramework.h"
#include "support/KeloTestServer.h"
#include "support/WsClient.h"
#include "tavelabi/Resource.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::kelo::test {

using namespace std::chrono_literals;

// Opens a WebSocket on the server's HTTP port with the session in the cookie (when given).
inline std::unique_ptr<WsClient> openWs(KeloTestServer& server, const std::string& target,
                                        const std::string& session = "") {
  auto client = std::make_unique<WsClient>("127.0.0.1", server.httpPort());
  WsClient::Headers headers;
  if (!session.empty()) headers.push_back({"Cookie", "SessionID=" + session});
  client->connect(target, headers);
  return client;
}

// A heartbeat socket that has had its first "pong": the address is pushable from now on.
inline std::unique_ptr<WsClient> startHeartbeat(KeloTestServer& server,
                                                const std::string& session) {
  auto ping = openWs(server, "/1/ws/ping", session);
  auto pong = ping->receive(5s);
  if (!pong || pong->data != "pong") throw std::runtime_error("no pong from /1/ws/ping");
  return ping;
}

// A host-side action; returns once the listeners have had it, so that a Create made before a
// subscription can never reach that subscription late.
// The first message goes out before the subscription exists: a test that changes the resource
// right after it waits for the subscription first.
inline bool waitForSubscribers(const std::string& path, std::size_t count) {
  return KeloTestServer::waitFor([&] {
    const auto counts = web::app().getPlugin<ResourceListenerManager>()->clientCounts();
    const auto found = counts.find(path);
    return found != counts.end() && found->second == count;
  });
}

inline void hostWrite(KeloTestServer& server, tavelabi::CCRUD verb, const std::string& path,
                      const tavelabi::Resource& resource) {
  tavelabi::ResourceAction action(verb, path, resource, nullptr, "");
  server.host().processInternalAction(action);
  server.host().waitForListeners();
}

inline void hostUpdate(KeloTestServer& server, const std::string& path, int value) {
  hostWrite(server, tavelabi::CCRUD::Update, path,
            tavelabi::Resource(tavelabi::ResourceValue(value)));
}

inline protobuf::Resource parseResource(const WsClient::Message& message) {
  protobuf::Resource resource;
  if (message.text || !resource.ParseFromString(message.data)) {
    throw std::runtime_error("not a binary Resource frame");
  }
  return resource;
}

inline int intValueOf(const WsClient::Message& message) {
  return parseResource(message).values().at("value").intvalue().value();
}

// How often `part` occurs in the plug-in's log file.
inline std::size_t logCount(const KeloTestServer& server, const std::string& part) {
  const std::string log = server.readLog();
  std::size_t count = 0;
  for (auto at = log.find(part); at != std::string::npos; at = log.find(part, at + part.size())) {
    ++count;
  }
  return count;
}

// Sets one key of the web configuration's "app" section before the server starts.
inline void setWebAppOption(const KeloTestServer& server, const std::string& key,
                            const Json::Value& value) {
  Json::Value root;
  {
    std::ifstream in(server.webConfigFile());
    in >> root;
  }
  root["app"][key] = value;
  std::ofstream out(server.webConfigFile());
  out << root;
}

}  // namespace halvor::kelo::test
