#pragma once

#include <prometheus/registry.h>

#include <map>
#include <optional>
#include <string>

#include "halvor/protobuf/Monitoring.pb.h"
#include "kelo/web/HttpRequest.h"
#include "tavelabi/IPluginInfo.h"
#include "tavelabi/ITavel.h"
#include "tavelabi/PluginStatus.h"

namespace halvor::kelo {

// What one scrape of GET /metrics reads, each part as gauges of a registry made for that scrape:
// the host's meters and active alarms (read by the meter and alarm helpers under the session
// given, the plug-in's own), the plug-in's state and the web server's connections. Host text
// goes into label values only, never into a metric's name.
class MetricsEndpointHelperClass {
 public:
  MetricsEndpointHelperClass() = delete;

  // "kelo_meter_value": every meter of the dashboard's collections whose reading is a number or a
  // boolean (1 or 0), labelled collection, group, meter (the labels), units, device (its GUID)
  // and path. The tree is read once, each read with the activity bypass. A collection that cannot
  // be read is left out, logged, and makes the result false.
  static bool addMeters(const web::HttpRequestPtr& req, tavelabi::ITavel* host,
                        tavelabi::IPluginInfo* info, std::string sessionId,
                        prometheus::Registry& registry);
  // "kelo_alarm_active" (1 per active alarm, labelled severity, device, name and path) and
  // "kelo_active_alarms" (their number per severity, every severity present). When the list
  // cannot be read (a listed alarm that went away fails it, as it fails the alarm routes), the
  // result is false and neither metric is there.
  static bool addAlarms(const web::HttpRequestPtr& req, tavelabi::ITavel* host,
                        tavelabi::IPluginInfo* info, std::string sessionId,
                        prometheus::Registry& registry);
  // "kelo_plugin_status" (1 for the current code, 0 for the others) and "kelo_build_info".
  static void addPluginState(tavelabi::IPluginInfo* info, const tavelabi::PluginStatus& status,
                             prometheus::Registry& registry);
  // "kelo_http_connections_open", "kelo_websocket_connections_open", and
  // "kelo_websocket_clients" per subscribed path.
  static void addServerState(std::size_t connections, std::size_t webSockets,
                             const std::map<std::string, std::size_t>& clientsByPath,
                             prometheus::Registry& registry);
  // "kelo_metrics_source_up": 1 when the part ("meters", "alarms") was read whole, else 0.
  static void addSourceState(const std::string& source, bool up, prometheus::Registry& registry);

  // A meter's reading as a sample: a number as it is, a boolean as 1 or 0; nothing for text or a
  // meter without a reading.
  static std::optional<double> readingOf(const protobuf::Meter& meter);
  // The device's GUID, or its name when it has no GUID, or "".
  static std::string deviceOf(const protobuf::Device& device);
};

}  // namespace halvor::kelo
