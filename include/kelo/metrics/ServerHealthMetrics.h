#pragma once

#include <prometheus/counter.h>
#include <prometheus/family.h>
#include <prometheus/metric_family.h>
#include <prometheus/registry.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "kelo/metrics/RequestDurations.h"
#include "kelo/web/TrafficObserver.h"

namespace halvor::kelo {

// The web server's own health, counted as it happens: requests by route template, method and
// status, their durations by route template, and WebSocket pushes sent or skipped for a lapsed
// heartbeat. Every count is an atomic addition; the first response of a (route, method, status)
// on an I/O thread looks its counter up once under the library's lock, later ones find it in
// that thread's own table without a lock.
class ServerHealthMetrics : public web::TrafficObserver {
 public:
  ServerHealthMetrics();

  // The process-wide one: the plug-in's web application reports to it, and so do the pushes.
  static const std::shared_ptr<ServerHealthMetrics>& instance();

  // The route label of a response that no route took.
  static constexpr const char* kNoRoute = "none";

  void onResponse(const std::string& route, web::HttpMethod method, int status,
                  std::chrono::steady_clock::duration elapsed) override;
  // A push handed to a client's connection.
  void pushSent() { pushesSent_.Increment(); }
  // A push left out because the client's heartbeat had lapsed.
  void pushSkipped() { pushesSkipped_.Increment(); }

  // Everything counted so far.
  std::vector<prometheus::MetricFamily> collect() const;

 private:
  struct CachedCounter {
    web::HttpMethod method;
    int status;
    prometheus::Counter* counter;
  };
  // What one I/O thread found for one route: the route's text is kept to tell a route from
  // another that a later application placed at the same address.
  struct CachedRoute {
    std::string pattern;
    RequestDurations::Series* durations = nullptr;
    std::vector<CachedCounter> counters;
  };

  CachedRoute& cachedRoute(const std::string& route);
  prometheus::Counter& requestCounter(CachedRoute& cached, const std::string& route,
                                      web::HttpMethod method, int status);

  // Tells this object's entries in a thread's table from those of another one.
  const std::uint64_t id_;
  std::shared_ptr<prometheus::Registry> registry_;
  prometheus::Family<prometheus::Counter>& requests_;
  prometheus::Counter& pushesSent_;
  prometheus::Counter& pushesSkipped_;
  RequestDurations durations_;
};

}  // namespace halvor::kelo
