#include "kelo/handlers/http/metrics/MetricsEndpointHelperClass.h"

#include <prometheus/gauge.h>

#include <array>
#include <boost/exception/diagnostic_information.hpp>

#include "kelo/KeloLog.h"
#include "kelo/handlers/http/KeloResourceAction.h"
#include "kelo/handlers/http/alarms/AlarmEndpointHelperClass.h"
#include "kelo/handlers/http/meters/MeterEndpointHelperClass.h"

namespace halvor::kelo {

namespace {

using prometheus::BuildGauge;
using prometheus::Family;
using prometheus::Gauge;

constexpr const char* kMeterCollections = "/meters/**/list";

// The collection paths of the dashboard, listed under the plug-in's own session.
std::vector<std::string> collectionPaths(const web::HttpRequestPtr& req, tavelabi::ITavel* host,
                                         tavelabi::IPluginInfo* info) {
  KeloResourceAction list(tavelabi::CCRUD::Command, "/resource/list",
                          tavelabi::Resource("value", tavelabi::ResourceValue(kMeterCollections)),
                          info, info->getSessionId(), req);
  const tavelabi::Resource answer = host->processResourceAction(list);
  std::vector<std::string> paths;
  for (const tavelabi::ResourceValue& path : answer.values.at("value").getListValue()) {
    paths.push_back(path.getStringValue());
  }
  return paths;
}

void addCollection(const protobuf::MeterCollection& collection, Family<Gauge>& meters) {
  for (const protobuf::MeterGroup& group : collection.groups()) {
    for (const protobuf::Meter& meter : group.meters()) {
      const std::optional<double> reading = MetricsEndpointHelperClass::readingOf(meter);
      if (!reading) continue;
      meters
          .Add({{"collection", collection.label().value()},
                {"group", group.label().value()},
                {"meter", meter.label().value()},
                {"units", meter.units().value()},
                {"device", MetricsEndpointHelperClass::deviceOf(meter.device())},
                {"path", meter.path().value()}})
          .Set(*reading);
    }
  }
}

}  // namespace

bool MetricsEndpointHelperClass::addMeters(const web::HttpRequestPtr& req, tavelabi::ITavel* host,
                                           tavelabi::IPluginInfo* info, std::string sessionId,
                                           prometheus::Registry& registry) {
  Family<Gauge>& meters = BuildGauge()
                              .Name("kelo_meter_value")
                              .Help(
                                  "The transmitter's meters: a reading in its own units, "
                                  "a status as 1 or 0")
                              .Register(registry);
  bool whole = true;
  std::vector<std::string> paths;
  try {
    paths = collectionPaths(req, host, info);
  } catch (...) {
    KELO_LOG(ERROR, info->getLoggerId()) << "Metrics: cannot list the meter collections: "
                                         << boost::current_exception_diagnostic_information();
    return false;
  }
  for (const std::string& path : paths) {
    try {
      addCollection(*MeterEndpointHelperClass::getCurrentMeterCollectionInfo(req, host, info, path,
                                                                             sessionId, true),
                    meters);
    } catch (...) {
      // One collection that cannot be read does not hide the others.
      KELO_LOG(ERROR, info->getLoggerId()) << "Metrics: cannot read the meters of " << path << ": "
                                           << boost::current_exception_diagnostic_information();
      whole = false;
    }
  }
  return whole;
}

bool MetricsEndpointHelperClass::addAlarms(const web::HttpRequestPtr& req, tavelabi::ITavel* host,
                                           tavelabi::IPluginInfo* info, std::string sessionId,
                                           prometheus::Registry& registry) {
  std::shared_ptr<protobuf::AlarmList> list;
  try {
    list = AlarmEndpointHelperClass::generateAlarmList(req, host, info, sessionId,
                                                       tavelabi::Resource());
  } catch (...) {
    KELO_LOG(ERROR, info->getLoggerId()) << "Metrics: cannot read the active alarms: "
                                         << boost::current_exception_diagnostic_information();
    return false;
  }
  Family<Gauge>& active = BuildGauge()
                              .Name("kelo_alarm_active")
                              .Help("1 for each active alarm of the transmitter")
                              .Register(registry);
  Family<Gauge>& counts = BuildGauge()
                              .Name("kelo_active_alarms")
                              .Help("The number of active alarms by severity")
                              .Register(registry);
  std::array<double, 4> bySeverity{};
  for (const protobuf::Alarm& alarm : list->alarms()) {
    const std::string severity = protobuf::AlarmSeverity_Name(alarm.severity());
    active
        .Add({{"severity", severity},
              {"device", deviceOf(alarm.device())},
              {"name", alarm.name().value()},
              {"path", alarm.path().value()}})
        .Set(1);
    if (alarm.severity() >= 0 && static_cast<std::size_t>(alarm.severity()) < bySeverity.size()) {
      bySeverity[static_cast<std::size_t>(alarm.severity())] += 1;
    }
  }
  for (std::size_t severity = 0; severity < bySeverity.size(); ++severity) {
    counts
        .Add({{"severity",
               protobuf::AlarmSeverity_Name(static_cast<protobuf::AlarmSeverity>(severity))}})
        .Set(bySeverity[severity]);
  }
  return true;
}

void MetricsEndpointHelperClass::addPluginState(tavelabi::IPluginInfo* info,
                                                const tavelabi::PluginStatus& status,
                                                prometheus::Registry& registry) {
  Family<Gauge>& codes = BuildGauge()
                             .Name("kelo_plugin_status")
                             .Help(
                                 "The plug-in's status as last reported to the host: 1 for "
                                 "the current one")
                             .Register(registry);
  for (int code = tavelabi::PluginStatus::Ok; code <= tavelabi::PluginStatus::Initializing;
       ++code) {
    const auto asCode = static_cast<tavelabi::PluginStatus::Code>(code);
    codes.Add({{"status", tavelabi::PluginStatus::codeName(asCode)}})
        .Set(asCode == status.getCode() ? 1 : 0);
  }
  BuildGauge()
      .Name("kelo_build_info")
      .Help("The plug-in's name and version, always 1")
      .Register(registry)
      .Add({{"name", info->getName()}, {"version", info->getVersion()}})
      .Set(1);
}

void MetricsEndpointHelperClass::addServerState(
    std::size_t connections, std::size_t webSockets,
    const std::map<std::string, std::size_t>& clientsByPath, prometheus::Registry& registry) {
  // The two counts are read one after the other: never let a connection that became a WebSocket
  // in between make the difference negative.
  const std::size_t http = connections > webSockets ? connections - webSockets : 0;
  BuildGauge()
      .Name("kelo_http_connections_open")
      .Help("Open HTTP connections, plain and TLS, WebSockets not included")
      .Register(registry)
      .Add({})
      .Set(static_cast<double>(http));
  BuildGauge()
      .Name("kelo_websocket_connections_open")
      .Help("Open WebSocket connections")
      .Register(registry)
      .Add({})
      .Set(static_cast<double>(webSockets));
  Family<Gauge>& clients = BuildGauge()
                               .Name("kelo_websocket_clients")
                               .Help("WebSocket clients subscribed, by subscribed path")
                               .Register(registry);
  for (const auto& [path, count] : clientsByPath) {
    clients.Add({{"path", path}}).Set(static_cast<double>(count));
  }
}

void MetricsEndpointHelperClass::addSourceState(const std::string& source, bool up,
                                                prometheus::Registry& registry) {
  BuildGauge()
      .Name("kelo_metrics_source_up")
      .Help("1 when this scrape read the part of the host's data whole, 0 when a read failed")
      .Register(registry)
      .Add({{"source", source}})
      .Set(up ? 1 : 0);
}

std::optional<double> MetricsEndpointHelperClass::readingOf(const protobuf::Meter& meter) {
  const auto found = meter.value().values().find("value");
  if (found == meter.value().values().end()) return std::nullopt;
  const protobuf::ResourceValue& value = found->second;
  switch (value.type()) {
    case protobuf::ResourceValue::BOOL:
      return value.boolvalue().value() ? 1.0 : 0.0;
    case protobuf::ResourceValue::FLOAT:
      return static_cast<double>(value.floatvalue().value());
    case protobuf::ResourceValue::DOUBLE:
      return value.doublevalue().value();
    case protobuf::ResourceValue::INT32:
      return static_cast<double>(value.intvalue().value());
    default:
      return std::nullopt;
  }
}

std::string MetricsEndpointHelperClass::deviceOf(const protobuf::Device& device) {
  if (device.has_guid()) return device.guid().value();
  return device.name().value();
}

}  // namespace halvor::kelo
