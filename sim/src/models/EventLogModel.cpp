#include "sim/models/EventLogModel.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <utility>

#include "sim/SimTavel.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::sim {

using tavelabi::Resource;
using tavelabi::ResourceAction;
using tavelabi::ResourceValue;
using tavelabi::ResourceValueType;
using Record = ResourceValue::Map;

namespace {

// The type names of the log with the numbers clients filter by; 0 is every type.
constexpr std::array<const char*, 7> kEventTypes = {
    "UNSPECIFIED",         "PRESET_CHANGE", "POWER_CHANGE",   "FREQUENCY_CHANGE",
    "LOCAL_REMOTE_CHANGE", "ALARM_CHANGE",  "RF_STATE_CHANGE"};
// Severity names in the order they sort by.
constexpr std::array<const char*, 4> kSeverities = {"CRITICAL", "REDUCED_POWER", "MAINTENANCE",
                                                    "UNSPECIFIED_ALARM_SEVERITY"};
constexpr const char* kNoSeverity = "UNSPECIFIED_ALARM_SEVERITY";

// The columns of the CSV file, in order.
constexpr std::array<const char*, 9> kCsvColumns = {"eventLogId", "time",        "deviceName",
                                                    "deviceId",   "eventType",   "eventName",
                                                    "severity",   "description", "value"};

// The keys of a record and the type each holds.
ResourceValueType typeOfKey(const std::string& key) {
  if (key == "seconds") return ResourceValueType::DOUBLE;
  if (key == "hundredths" || key == "eventLogId") return ResourceValueType::INT32;
  if (key == "eventType" || key == "eventName" || key == "description" || key == "severity" ||
      key == "deviceName" || key == "deviceId" || key == "value") {
    return ResourceValueType::STRING;
  }
  throw std::invalid_argument("eventlog: unknown event key \"" + key + "\"");
}

template <std::size_t N>
int indexOf(const std::array<const char*, N>& names, const std::string& name) {
  for (std::size_t i = 0; i < N; ++i) {
    if (name == names[i]) return static_cast<int>(i);
  }
  return 0;  // an unknown name counts as value 0, as clients read it
}

// What a record holds under a key, or the type's empty value when it lacks the key.
std::string textOf(const Record& record, const char* key) {
  const auto found = record.find(key);
  return found == record.end() ? std::string() : found->second.getStringValue();
}
int intOf(const Record& record, const char* key) {
  const auto found = record.find(key);
  return found == record.end() ? 0 : found->second.getIntValue();
}
double secondsOf(const Record& record) {
  const auto found = record.find("seconds");
  return found == record.end() ? 0.0 : found->second.getDoubleValue();
}
int typeNumberOf(const Record& record) { return indexOf(kEventTypes, textOf(record, "eventType")); }

// -1, 0 or 1 as a sorts before, with or after b by the field a client orders by.
int compareBy(const std::string& field, const Record& a, const Record& b) {
  auto three = [](const auto& x, const auto& y) { return x < y ? -1 : (y < x ? 1 : 0); };
  if (field == "device") {
    int byName = three(textOf(a, "deviceName"), textOf(b, "deviceName"));
    return byName != 0 ? byName : three(textOf(a, "deviceId"), textOf(b, "deviceId"));
  }
  if (field == "name") return three(textOf(a, "eventName"), textOf(b, "eventName"));
  if (field == "description") return three(textOf(a, "description"), textOf(b, "description"));
  if (field == "alarmSeverity") {
    return three(indexOf(kSeverities, textOf(a, "severity")),
                 indexOf(kSeverities, textOf(b, "severity")));
  }
  if (field == "value") return three(textOf(a, "value"), textOf(b, "value"));
  if (field == "type") return three(typeNumberOf(a), typeNumberOf(b));
  if (field == "eventId") return three(intOf(a, "eventLogId"), intOf(b, "eventLogId"));
  // "time", and any field the log does not know.
  int bySeconds = three(secondsOf(a), secondsOf(b));
  return bySeconds != 0 ? bySeconds : three(intOf(a, "hundredths"), intOf(b, "hundredths"));
}

// A request's key of the given type, or `fallback` when it lacks the key.
template <typename T>
T requestValue(const Resource& request, const char* key, ResourceValueType type, T fallback,
               T (*get)(const ResourceValue&)) {
  const auto found = request.values.find(key);
  if (found == request.values.end()) return fallback;
  if (found->second.getType() != type) {
    throw std::invalid_argument(std::string("eventlog: \"") + key + "\" must be " +
                                tavelabi::toString(type));
  }
  return get(found->second);
}
std::string getString(const ResourceValue& value) { return value.getStringValue(); }
bool getBool(const ResourceValue& value) { return value.getBoolValue(); }
int getInt(const ResourceValue& value) { return value.getIntValue(); }

// A fixture's event: plain JSON values, each key converted to the type the log keeps it in.
Record recordOfJson(const Json::Value& event) {
  if (!event.isObject()) throw std::invalid_argument("eventlog: an event is a JSON object");
  Record record;
  for (const std::string& key : event.getMemberNames()) {
    const Json::Value& value = event[key];
    switch (typeOfKey(key)) {
      case ResourceValueType::DOUBLE:
        if (!value.isNumeric()) throw std::invalid_argument("eventlog: \"seconds\" is a number");
        record[key] = ResourceValue(value.asDouble());
        break;
      case ResourceValueType::INT32:
        if (!value.isInt()) {
          throw std::invalid_argument("eventlog: \"" + key + "\" is a 32-bit whole number");
        }
        record[key] = ResourceValue(value.asInt());
        break;
      default:
        if (!value.isString()) throw std::invalid_argument("eventlog: \"" + key + "\" is a text");
        record[key] = ResourceValue(value.asString());
        break;
    }
  }
  return record;
}

// "2026-11-02T14:05:09.25Z" from a record's two time keys; empty for seconds that no calendar
// date of four digits holds.
std::string isoTimeOf(const Record& record) {
  const double whole = std::floor(secondsOf(record));
  if (!(whole >= -62135596800.0 && whole <= 253402300799.0)) return {};
  const auto seconds = static_cast<std::time_t>(whole);
  std::tm utc{};
  gmtime_r(&seconds, &utc);
  char text[48];
  std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d.%02dZ", utc.tm_year + 1900,
                utc.tm_mon + 1, utc.tm_mday, utc.tm_hour, utc.tm_min, utc.tm_sec,
                intOf(record, "hundredths") % 100);
  return text;
}

// A CSV field: quoted when it holds a separator, a quote or a line break, quotes doubled.
std::string csvField(const std::string& field) {
  if (field.find_first_of(",\"\r\n") == std::string::npos) return field;
  std::string quoted = "\"";
  for (char c : field) {
    if (c == '"') quoted += '"';
    quoted += c;
  }
  return quoted + "\"";
}

// One line of the file; a key the record lacks is an empty field, and so is the time of a
// record without "seconds".
std::string csvLine(const Record& record) {
  std::string line;
  for (std::size_t i = 0; i < kCsvColumns.size(); ++i) {
    const std::string column = kCsvColumns[i];
    if (i > 0) line += ',';
    if (column == "time") {
      if (record.count("seconds") != 0) line += isoTimeOf(record);
    } else if (record.count(column) == 0) {
      // an empty field
    } else if (column == "eventLogId") {
      line += std::to_string(intOf(record, "eventLogId"));
    } else {
      line += csvField(textOf(record, column.c_str()));
    }
  }
  return line + "\r\n";
}

std::string csvHeader() {
  std::string line;
  for (std::size_t i = 0; i < kCsvColumns.size(); ++i) {
    if (i > 0) line += ',';
    line += kCsvColumns[i];
  }
  return line + "\r\n";
}

// The demo's devices: name and ids.
struct DemoDevice {
  const char* name;
  int ids;
};
constexpr std::array<DemoDevice, 4> kDevices = {
    {{"exciter", 2}, {"amplifier", 4}, {"powersupply", 2}, {"fan", 4}}};

// The demo's alarms: device, alarm text, severity.
struct DemoAlarm {
  const char* device;
  const char* alarm;
  const char* severity;
};
constexpr std::array<DemoAlarm, 9> kAlarms = {{
    {"exciter", "PLL unlocked", "CRITICAL"},
    {"exciter", "Audio input lost", "MAINTENANCE"},
    {"amplifier", "High reflected power", "CRITICAL"},
    {"amplifier", "Temperature high", "REDUCED_POWER"},
    {"amplifier", "Output power reduced", "REDUCED_POWER"},
    {"powersupply", "Mains voltage low", "REDUCED_POWER"},
    {"powersupply", "Supply voltage out of range", "CRITICAL"},
    {"fan", "Fan speed low", "MAINTENANCE"},
    {"fan", "Fan stalled", "CRITICAL"},
}};
constexpr std::array<const char*, 5> kPresets = {"Morning show", "Daytime", "Evening", "Night",
                                                 "Emergency"};
constexpr std::array<int, 5> kPowers = {500, 750, 1000, 1500, 2000};
constexpr std::array<const char*, 4> kFrequencies = {"94.20", "98.40", "101.70", "104.90"};

int devicesIdsOf(const std::string& device) {
  for (const DemoDevice& known : kDevices) {
    if (device == known.name) return known.ids;
  }
  return 1;
}

}  // namespace

EventLogModel::EventLogModel() : csvDirectory_(defaultCsvDirectory()), random_(20261123U) {}

std::string EventLogModel::defaultCsvDirectory() {
  std::error_code error;
  std::filesystem::path scratch = std::filesystem::temp_directory_path(error);
  if (error) scratch = "/tmp";
  return (scratch / "tavel-sim-files" / "eventlog").string();
}

std::vector<Command> EventLogModel::commands() {
  return {{kGetEvents, bind(&EventLogModel::getEvents)},
          {kDeleteEvents, bind(&EventLogModel::deleteEvents)},
          {kGenerateCsv, bind(&EventLogModel::generateCsv)}};
}

void EventLogModel::applyFixture(const Json::Value& section) {
  if (!section.isObject()) throw std::invalid_argument("eventlog: the section is a JSON object");
  for (const std::string& key : section.getMemberNames()) {
    if (key != "events" && key != "newEvents" && key != "csvDirectory") {
      throw std::invalid_argument("eventlog: unknown key \"" + key + "\"");
    }
  }
  std::vector<Record> events;
  const Json::Value& given = section["events"];
  if (!given.isNull() && !given.isArray()) {
    throw std::invalid_argument("eventlog: \"events\" is a list");
  }
  for (const Json::Value& event : given) events.push_back(recordOfJson(event));

  std::lock_guard lock(mutex_);
  if (!given.isNull()) {
    log_ = std::move(events);
    logFromFixture_ = true;
    newEvents_ = false;
    nextId_ = 1;
    for (const Record& record : log_) nextId_ = std::max(nextId_, intOf(record, "eventLogId") + 1);
  }
  if (section.isMember("newEvents")) {
    if (!section["newEvents"].isBool()) {
      throw std::invalid_argument("eventlog: \"newEvents\" is true or false");
    }
    newEvents_ = section["newEvents"].asBool();
  }
  if (section.isMember("csvDirectory")) {
    if (!section["csvDirectory"].isString() || section["csvDirectory"].asString().empty()) {
      throw std::invalid_argument("eventlog: \"csvDirectory\" is a directory's path");
    }
    csvDirectory_ = section["csvDirectory"].asString();
  }
}

void EventLogModel::seed() {
  std::lock_guard lock(mutex_);
  if (logFromFixture_) return;
  const double now =
      std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
  std::uniform_real_distribution<double> when(now - kDemoDays * 86400.0, now);
  std::vector<double> times(kDemoEvents);
  for (double& time : times) time = when(random_);
  std::sort(times.begin(), times.end());
  log_.clear();
  nextId_ = 1;
  for (double time : times) log_.push_back(makeEvent(time));
}

void EventLogModel::tick(const tavelabi::TimePoint& now) {
  std::lock_guard lock(mutex_);
  if (!newEvents_) return;
  std::uniform_int_distribution<int> pause(20, 90);
  if (!started_) {
    started_ = true;
    nextEventAt_ = now + std::chrono::seconds(pause(random_));
    return;
  }
  if (now < nextEventAt_) return;
  appendNewEvent();
  nextEventAt_ = now + std::chrono::seconds(pause(random_));
}

void EventLogModel::appendNewEvent() {
  const double now =
      std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
  log_.push_back(makeEvent(now));
}

// One event of a random kind at `seconds` (Unix time with a fraction), with the next id.
EventLogModel::Record EventLogModel::makeEvent(double seconds) {
  auto pick = [this](int count) {
    return std::uniform_int_distribution<int>(0, count - 1)(random_);
  };
  auto deviceId = [&](const std::string& device) {
    return std::to_string(1 + pick(devicesIdsOf(device)));
  };
  Record record;
  const double whole = std::floor(seconds);
  record["eventLogId"] = ResourceValue(nextId_++);
  record["seconds"] = ResourceValue(whole);
  record["hundredths"] = ResourceValue(std::min(99, static_cast<int>((seconds - whole) * 100)));
  record["severity"] = ResourceValue(kNoSeverity);
  record["deviceName"] = ResourceValue("exciter");
  record["deviceId"] = ResourceValue(deviceId("exciter"));

  // Alarms and power changes are the most frequent, frequency changes the rarest.
  const int kind = pick(20);
  if (kind < 6) {
    const DemoAlarm& alarm = kAlarms[pick(static_cast<int>(kAlarms.size()))];
    const bool raised = pick(2) == 0;
    const std::string id = deviceId(alarm.device);
    record["eventType"] = ResourceValue("ALARM_CHANGE");
    record["eventName"] = ResourceValue(raised ? "Alarm raised" : "Alarm cleared");
    record["description"] = ResourceValue(std::string(alarm.device) + " " + id + ": " +
                                          alarm.alarm + (raised ? " raised" : " cleared"));
    record["severity"] = ResourceValue(alarm.severity);
    record["deviceName"] = ResourceValue(alarm.device);
    record["deviceId"] = ResourceValue(id);
    record["value"] = ResourceValue(raised ? "ACTIVE" : "CLEARED");
  } else if (kind < 11) {
    const int watts = kPowers[pick(static_cast<int>(kPowers.size()))];
    const bool amplifier = pick(3) != 0;
    record["eventType"] = ResourceValue("POWER_CHANGE");
    record["eventName"] = ResourceValue("Power change");
    record["description"] = ResourceValue("Output power set to " + std::to_string(watts) + " W");
    if (amplifier) {
      record["deviceName"] = ResourceValue("amplifier");
      record["deviceId"] = ResourceValue(deviceId("amplifier"));
    }
    record["value"] = ResourceValue(std::to_string(watts) + " W");
  } else if (kind < 14) {
    const char* preset = kPresets[pick(static_cast<int>(kPresets.size()))];
    record["eventType"] = ResourceValue("PRESET_CHANGE");
    record["eventName"] = ResourceValue("Preset change");
    record["description"] = ResourceValue(std::string("Active preset changed to ") + preset);
    record["value"] = ResourceValue(preset);
  } else if (kind < 16) {
    const bool on = pick(2) == 0;
    record["eventType"] = ResourceValue("RF_STATE_CHANGE");
    record["eventName"] = ResourceValue("RF state change");
    record["description"] = ResourceValue(on ? "RF output switched on" : "RF output switched off");
    record["value"] = ResourceValue(on ? "ON" : "OFF");
  } else if (kind < 18) {
    const bool remote = pick(2) == 0;
    record["eventType"] = ResourceValue("LOCAL_REMOTE_CHANGE");
    record["eventName"] = ResourceValue("Local/remote change");
    record["description"] =
        ResourceValue(remote ? "Control switched to remote" : "Control switched to local");
    record["value"] = ResourceValue(remote ? "REMOTE" : "LOCAL");
  } else {
    const std::string megahertz = kFrequencies[pick(static_cast<int>(kFrequencies.size()))];
    record["eventType"] = ResourceValue("FREQUENCY_CHANGE");
    record["eventName"] = ResourceValue("Frequency change");
    record["description"] = ResourceValue("Carrier frequency set to " + megahertz + " MHz");
    record["value"] = ResourceValue(megahertz + " MHz");
  }
  return record;
}

EventLogModel::Query EventLogModel::queryOf(const Resource& request) {
  Query query;
  query.displayOrder = requestValue<std::string>(request, "displayOrder", ResourceValueType::STRING,
                                                 query.displayOrder, getString);
  query.descending =
      requestValue<bool>(request, "descending", ResourceValueType::BOOL, query.descending, getBool);
  query.eventType =
      requestValue<int>(request, "eventType", ResourceValueType::INT32, query.eventType, getInt);
  return query;
}

std::vector<Record> EventLogModel::selected(const Query& query) const {
  std::vector<Record> records;
  {
    std::lock_guard lock(mutex_);
    for (const Record& record : log_) {
      if (query.eventType == 0 || typeNumberOf(record) == query.eventType) {
        records.push_back(record);
      }
    }
  }
  // Equal by the field: by id, so that the order is the same at every request; descending is
  // the exact reverse of ascending.
  auto ascending = [&query](const Record& a, const Record& b) {
    int byField = compareBy(query.displayOrder, a, b);
    if (byField != 0) return byField < 0;
    return intOf(a, "eventLogId") < intOf(b, "eventLogId");
  };
  if (query.descending) {
    std::stable_sort(records.begin(), records.end(),
                     [&ascending](const Record& a, const Record& b) { return ascending(b, a); });
  } else {
    std::stable_sort(records.begin(), records.end(), ascending);
  }
  return records;
}

// Page N (from 1) of pageSize records. Page 0 is the whole selection, unpaged; a negative page
// or a page size below 1 is an empty page. "count" is the size of the whole selection.
Resource EventLogModel::getEvents(ResourceAction& action) {
  const Query query = queryOf(action.resource);
  const int page = requestValue<int>(action.resource, "page", ResourceValueType::INT32, 0, getInt);
  const int pageSize =
      requestValue<int>(action.resource, "pageSize", ResourceValueType::INT32, 15, getInt);
  const std::vector<Record> records = selected(query);

  std::size_t first = 0;
  std::size_t end = records.size();
  if (page < 0 || (page > 0 && pageSize < 1)) {
    end = 0;
  } else if (page > 0) {
    const std::int64_t from = (static_cast<std::int64_t>(page) - 1) * pageSize;
    first = static_cast<std::size_t>(std::min<std::int64_t>(from, records.size()));
    end = static_cast<std::size_t>(std::min<std::int64_t>(from + pageSize, records.size()));
  }
  ResourceValue::List pageRecords;
  for (std::size_t i = first; i < end; ++i) pageRecords.emplace_back(records[i]);
  ResourceValue list;
  list.setList(pageRecords);
  Resource answer;
  answer.addValue("value", list);
  answer.addValue("count", static_cast<int>(records.size()));
  return answer;
}

Resource EventLogModel::deleteEvents(ResourceAction& /*action*/) {
  std::lock_guard lock(mutex_);
  const auto removed = static_cast<int>(log_.size());
  log_.clear();
  return Resource("count", ResourceValue(removed));
}

// Writes the selection to a file beside the final one and renames it, so that a reader never
// sees half a file.
Resource EventLogModel::generateCsv(ResourceAction& action) {
  const std::vector<Record> records = selected(queryOf(action.resource));
  std::filesystem::path directory;
  {
    std::lock_guard lock(mutex_);
    directory = csvDirectory_;
  }
  // One writer at a time: the file and its partial twin have fixed names.
  std::lock_guard writing(csvMutex_);
  std::filesystem::create_directories(directory);
  const std::filesystem::path file = directory / kCsvFileName;
  const std::filesystem::path partial = directory / (std::string(kCsvFileName) + ".partial");
  {
    std::ofstream out(partial, std::ios::binary | std::ios::trunc);
    out << csvHeader();
    for (const Record& record : records) out << csvLine(record);
    out.flush();
    if (!out) throw std::runtime_error("eventlog: cannot write " + partial.string());
  }
  std::filesystem::rename(partial, file);
  Resource answer("value", ResourceValue(file.string()));
  answer.addValue("count", static_cast<int>(records.size()));
  return answer;
}

}  // namespace halvor::sim
