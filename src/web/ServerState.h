#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "ConnectionLimiter.h"
#include "DiskBudget.h"
#include "Router.h"
#include "StaticFiles.h"
#include "kelo/web/HttpAppFramework.h"

namespace halvor::kelo::web {

// One registered route: a handler or a WebSocket controller.
struct RouteEntry {
  std::string pattern;
  std::uint32_t methods = 0;
  std::string description;
  HttpAppFramework::RouteHandler handler;
  WebSocketControllerPtr webSocket;
};

// Everything connections need from their application. Filled before run(), read-only while
// serving (except the counters), and kept alive by every connection, so that a connection that
// outlives the application (held by a late callback) still finds it.
class ServerState {
 public:
  void applyCreationAdvices(const HttpResponsePtr& response) const;

  WebConfig config;
  Router router;
  std::vector<RouteEntry> routes;
  std::vector<HttpAppFramework::BeginningAdvice> beginningAdvices;
  std::vector<HttpAppFramework::ResponseCreationAdvice> creationAdvices;
  std::vector<HttpAppFramework::PreRoutingAdvice> preRoutingAdvices;
  std::unique_ptr<StaticFiles> staticFiles;
  std::string temporaryDirectory;
  std::vector<HttpAppFramework::UploadDirectoryChooser> uploadDirectoryChoosers;
  ConnectionLimiter limiter;
  std::shared_ptr<DiskBudget> diskBudget = std::make_shared<DiskBudget>();
  std::atomic<bool> stopping{false};
  // Counting hooks: told of every response; the open WebSocket connections.
  std::shared_ptr<TrafficObserver> trafficObserver;
  std::atomic<std::size_t> webSockets{0};
};

using ServerStatePtr = std::shared_ptr<ServerState>;

}  // namespace halvor::kelo::web
