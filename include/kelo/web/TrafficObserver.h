#pragma once

#include <chrono>
#include <string>

#include "kelo/web/HttpTypes.h"

namespace halvor::kelo::web {

// Told of every answer the server gives, for counting. Called on the connection's I/O thread,
// from several I/O threads at once: an implementation must be quick and safe for that.
class TrafficObserver {
 public:
  virtual ~TrafficObserver() = default;

  // `route` is the pattern of the route that answered ("/1/api/playlists/{guid}"), or empty when
  // no route took the request (static files, 404, a malformed request); the text lives as long as
  // the application. `elapsed` runs from the complete request to its response. An accepted
  // WebSocket upgrade counts with the status 101.
  virtual void onResponse(const std::string& route, HttpMethod method, int status,
                          std::chrono::steady_clock::duration elapsed) = 0;
};

}  // namespace halvor::kelo::web
