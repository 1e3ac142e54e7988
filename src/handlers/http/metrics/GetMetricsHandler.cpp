#include "kelo/handlers/http/metrics/GetMetricsHandler.h"

#include <openssl/crypto.h>
#include <openssl/sha.h>
#include <prometheus/text_serializer.h>
#include <strings.h>

#include <array>

#include "kelo/BackgroundTaskQueue.h"
#include "kelo/KeloHost.h"
#include "kelo/handlers/http/metrics/MetricsEndpointHelperClass.h"
#include "kelo/handlers/ws/ResourceListenerManager.h"
#include "kelo/metrics/ProcessMetrics.h"

namespace halvor::kelo {

namespace {

using Digest = std::array<unsigned char, SHA256_DIGEST_LENGTH>;

Digest digestOf(const std::string& text) {
  Digest digest{};
  SHA256(reinterpret_cast<const unsigned char*>(text.data()), text.size(), digest.data());
  return digest;
}

web::HttpResponsePtr plainAnswer(int status, const std::string& body) {
  web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
  resp->setStatusCode(status);
  resp->setContentTypeCode(web::CT_TEXT_PLAIN);
  resp->setBody(body);
  return resp;
}

}  // namespace

// The access check answers at once on the I/O thread; a scrape, which reads the whole meter
// tree, runs on the background queue, so that the I/O thread goes on writing pushes meanwhile.
void GetMetricsHandler::handle(const web::HttpRequestPtr& req, web::ResponseCallback&& callback) {
  const WebKeloInterface& plugin = KeloHost::plugin();
  if (web::HttpResponsePtr refused = refusal(req, plugin)) {
    callback(refused);
    return;
  }
  auto* queue = web::app().getPlugin<BackgroundTaskQueue>();
  if (queue == nullptr) {
    callback(respond(req, plugin, *ServerHealthMetrics::instance(), web::app()));
    return;
  }
  // The task works on a copy: the plug-in's own fields are cleared when the server stops.
  auto carried = std::make_shared<WebKeloInterface>();
  carried->tavel = plugin.tavel;
  carried->pluginInfo = plugin.pluginInfo;
  carried->metricsToken = plugin.metricsToken;
  carried->pluginStatus = plugin.pluginStatus;
  queue->runInBackground([req, callback = std::move(callback), carried] {
    web::HttpResponsePtr resp;
    try {
      resp = respond(req, *carried, *ServerHealthMetrics::instance(), web::app());
    } catch (const std::exception& error) {
      resp = plainAnswer(500, std::string(error.what()) + "\n");
    }
    callback(resp);
  });
}

web::HttpResponsePtr GetMetricsHandler::refusal(const web::HttpRequestPtr& req,
                                                const WebKeloInterface& plugin) {
  if (plugin.metricsToken.empty()) {
    return plainAnswer(404, "Metrics are off: the configuration has no \"metrics-token\".\n");
  }
  if (!bearerTokenMatches(req, plugin.metricsToken)) {
    web::HttpResponsePtr resp = plainAnswer(401, "A bearer token is required.\n");
    resp->addHeader("WWW-Authenticate", "Bearer realm=\"metrics\"");
    return resp;
  }
  return nullptr;
}

web::HttpResponsePtr GetMetricsHandler::respond(const web::HttpRequestPtr& req,
                                                const WebKeloInterface& plugin,
                                                const ServerHealthMetrics& health,
                                                web::HttpAppFramework& application) {
  if (web::HttpResponsePtr refused = refusal(req, plugin)) return refused;
  web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
  resp->setStatusCode(200);
  resp->setContentTypeString(kContentType);
  resp->setBody(exposition(req, plugin, health, application));
  return resp;
}

bool GetMetricsHandler::bearerTokenMatches(const web::HttpRequestPtr& req,
                                           const std::string& token) {
  static const std::string kScheme = "Bearer ";
  const std::string& authorization = req->getHeader("authorization");
  if (authorization.size() < kScheme.size() ||
      strncasecmp(authorization.c_str(), kScheme.c_str(), kScheme.size()) != 0) {
    return false;
  }
  const Digest given = digestOf(authorization.substr(kScheme.size()));
  const Digest expected = digestOf(token);
  return CRYPTO_memcmp(given.data(), expected.data(), given.size()) == 0;
}

std::string GetMetricsHandler::exposition(const web::HttpRequestPtr& req,
                                          const WebKeloInterface& plugin,
                                          const ServerHealthMetrics& health,
                                          web::HttpAppFramework& application) {
  // A registry of this scrape alone: an alarm that has gone or a meter that was removed since
  // the last scrape has no series left over.
  prometheus::Registry scrape;
  tavelabi::IPluginInfo* info = plugin.pluginInfo;
  const std::string session = info->getSessionId();
  MetricsEndpointHelperClass::addSourceState(
      "meters", MetricsEndpointHelperClass::addMeters(req, plugin.tavel, info, session, scrape),
      scrape);
  MetricsEndpointHelperClass::addSourceState(
      "alarms", MetricsEndpointHelperClass::addAlarms(req, plugin.tavel, info, session, scrape),
      scrape);
  if (plugin.pluginStatus) {
    MetricsEndpointHelperClass::addPluginState(info, plugin.pluginStatus(), scrape);
  }
  auto* listeners = application.getPlugin<ResourceListenerManager>();
  MetricsEndpointHelperClass::addServerState(
      application.connectionCount(), application.webSocketCount(),
      listeners != nullptr ? listeners->clientCounts() : std::map<std::string, std::size_t>{},
      scrape);
  ProcessMetrics::add(scrape);

  std::vector<prometheus::MetricFamily> families = scrape.Collect();
  for (prometheus::MetricFamily& family : health.collect()) {
    families.push_back(std::move(family));
  }
  return prometheus::TextSerializer().Serialize(families);
}

}  // namespace halvor::kelo
