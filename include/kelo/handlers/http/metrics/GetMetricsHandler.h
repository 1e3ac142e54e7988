#pragma once

#include <string>

#include "kelo/WebKeloInterface.h"
#include "kelo/metrics/ServerHealthMetrics.h"
#include "kelo/web/HttpAppFramework.h"
#include "kelo/web/HttpRequest.h"
#include "kelo/web/HttpResponse.h"

namespace halvor::kelo {

// GET "/metrics": the transmitter's meters and active alarms and the server's own health in the
// Prometheus text format. Served outside the versioned API and without the session frame: a
// scraper holds no session, it shows the bearer token of the configuration ("metrics-token"),
// and the host is read under the plug-in's own session. Without a configured token the page
// does not exist (404).
class GetMetricsHandler {
 public:
  GetMetricsHandler() = delete;

  static constexpr const char* kPath = "/metrics";
  static constexpr const char* kContentType = "text/plain; version=0.0.4; charset=utf-8";

  // The route: answers from the process-wide application and metrics. A refusal is answered on
  // the I/O thread; a scrape runs on the BackgroundTaskQueue, when there is one.
  static void handle(const web::HttpRequestPtr& req, web::ResponseCallback&& callback);

  // The 404 or 401 that `req` gets, or nullptr when it may scrape.
  static web::HttpResponsePtr refusal(const web::HttpRequestPtr& req,
                                      const WebKeloInterface& plugin);

  // The answer to `req`: 404 while `plugin` carries no token, 401 (with a WWW-Authenticate
  // challenge) without the right bearer token, otherwise 200 and the exposition. A wrong token
  // is answered at once, like any other request: nothing waits on the I/O thread.
  static web::HttpResponsePtr respond(const web::HttpRequestPtr& req,
                                      const WebKeloInterface& plugin,
                                      const ServerHealthMetrics& health,
                                      web::HttpAppFramework& application);

  // True when the request's "Authorization" is "Bearer " and `token` (the scheme in any case).
  // The tokens are compared by their SHA-256 digests with CRYPTO_memcmp, so that neither the
  // time nor the length of a wrong guess tells anything about the right one.
  static bool bearerTokenMatches(const web::HttpRequestPtr& req, const std::string& token);

  // The exposition: host data read under the plug-in's session, then the server's health.
  static std::string exposition(const web::HttpRequestPtr& req, const WebKeloInterface& plugin,
                                const ServerHealthMetrics& health,
                                web::HttpAppFramework& application);
};

}  // namespace halvor::kelo
