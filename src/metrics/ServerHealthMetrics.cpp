#include "kelo/metrics/ServerHealthMetrics.h"

#include <atomic>
#include <unordered_map>

namespace halvor::kelo {

namespace {

std::uint64_t nextObserverId() {
  static std::atomic<std::uint64_t> last{0};
  return ++last;
}

const std::string& routeLabel(const std::string& route) {
  static const std::string none = ServerHealthMetrics::kNoRoute;
  return route.empty() ? none : route;
}

}  // namespace

ServerHealthMetrics::ServerHealthMetrics()
    : id_(nextObserverId()),
      registry_(std::make_shared<prometheus::Registry>()),
      requests_(prometheus::BuildCounter()
                    .Name("kelo_http_requests_total")
                    .Help("HTTP requests answered, by route template, method and status")
                    .Register(*registry_)),
      pushesSent_(prometheus::BuildCounter()
                      .Name("kelo_websocket_pushes_sent_total")
                      .Help("WebSocket pushes handed to a client's connection")
                      .Register(*registry_)
                      .Add({})),
      pushesSkipped_(prometheus::BuildCounter()
                         .Name("kelo_websocket_pushes_skipped_total")
                         .Help("WebSocket pushes left out because the client's heartbeat lapsed")
                         .Register(*registry_)
                         .Add({})),
      durations_("kelo_http_request_duration_seconds",
                 "Time from a complete request to its response, by route template") {}

const std::shared_ptr<ServerHealthMetrics>& ServerHealthMetrics::instance() {
  // Never destroyed: I/O threads of a detached server thread may count after static destruction.
  static const auto* metrics =
      new std::shared_ptr<ServerHealthMetrics>(std::make_shared<ServerHealthMetrics>());
  return *metrics;
}

void ServerHealthMetrics::onResponse(const std::string& route, web::HttpMethod method, int status,
                                     std::chrono::steady_clock::duration elapsed) {
  CachedRoute& cached = cachedRoute(route);
  requestCounter(cached, route, method, status).Increment();
  RequestDurations::observe(*cached.durations,
                            std::chrono::duration_cast<std::chrono::nanoseconds>(elapsed));
}

// Each I/O thread keeps its own table, so that no lock is taken once a route was seen. Route
// texts live as long as their application, so their address is the key.
ServerHealthMetrics::CachedRoute& ServerHealthMetrics::cachedRoute(const std::string& route) {
  struct ThreadTable {
    std::uint64_t owner = 0;
    std::unordered_map<const std::string*, CachedRoute> routes;
  };
  thread_local ThreadTable table;
  if (table.owner != id_) {
    table.routes.clear();
    table.owner = id_;
  }
  CachedRoute& cached = table.routes[&route];
  if (cached.durations == nullptr || cached.pattern != route) {
    cached.pattern = route;
    cached.durations = &durations_.seriesOf(routeLabel(route));
    cached.counters.clear();
  }
  return cached;
}

prometheus::Counter& ServerHealthMetrics::requestCounter(CachedRoute& cached,
                                                         const std::string& route,
                                                         web::HttpMethod method, int status) {
  for (const CachedCounter& entry : cached.counters) {
    if (entry.method == method && entry.status == status) return *entry.counter;
  }
  prometheus::Counter& counter = requests_.Add({{"route", routeLabel(route)},
                                                {"method", std::string(web::toString(method))},
                                                {"status", std::to_string(status)}});
  cached.counters.push_back({method, status, &counter});
  return counter;
}

std::vector<prometheus::MetricFamily> ServerHealthMetrics::collect() const {
  std::vector<prometheus::MetricFamily> families = registry_->Collect();
  families.push_back(durations_.collect());
  return families;
}

}  // namespace halvor::kelo
