#include "sim/models/TimeModel.h"

#include <cctype>
#include <chrono>
#include <cstdio>

#include "sim/SimTavel.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::sim {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceAction;
using tavelabi::ResourceValue;
using tavelabi::ResourceValueType;

namespace {

Resource followed(const ResourceValue& value) {
  Resource resource(value);
  resource.values["set_value"] = value;
  return resource;
}

Resource refused(const std::string& text) { return Resource("errorMessage", ResourceValue(text)); }

bool isLeapYear(int year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

int daysIn(int year, int month) {
  static const int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && isLeapYear(year) ? 29 : kDays[month - 1];
}

// The written value, when it is there and of the type wanted.
const ResourceValue* setValueOf(const ResourceAction& action, ResourceValueType type) {
  const auto found = action.resource.values.find("set_value");
  if (found == action.resource.values.end() || found->second.getType() != type) return nullptr;
  return &found->second;
}

// A write the controller takes becomes its value at once.
void takeAtOnce(ResourceAction& action) {
  action.resource.values["value"] = action.resource.values.at("set_value");
}

}  // namespace

const std::vector<TimeModel::Region>& TimeModel::regions() {
  static const std::vector<Region> table{
      {"Africa",
       {{"Africa/Cairo", "Eastern European Time (Cairo)"},
        {"Africa/Johannesburg", "South Africa Standard Time"},
        {"Africa/Lagos", "West Africa Time"}}},
      {"America",
       {{"America/New_York", "Eastern Time (New York)"},
        {"America/Chicago", "Central Time (Chicago)"},
        {"America/Denver", "Mountain Time (Denver)"},
        {"America/Los_Angeles", "Pacific Time (Los Angeles)"},
        {"America/Sao_Paulo", "Brasilia Time"}}},
      {"Asia",
       {{"Asia/Kolkata", "India Standard Time"},
        {"Asia/Shanghai", "China Standard Time"},
        {"Asia/Tokyo", "Japan Standard Time"}}},
      {"Australia",
       {{"Australia/Perth", "Australian Western Time"},
        {"Australia/Sydney", "Australian Eastern Time (Sydney)"}}},
      {"Europe",
       {{"Europe/Berlin", "Central European Time (Berlin)"},
        {"Europe/Helsinki", "Eastern European Time (Helsinki)"},
        {"Europe/Lisbon", "Western European Time (Lisbon)"},
        {"Europe/London", "Greenwich Mean Time (London)"},
        {"Europe/Paris", "Central European Time (Paris)"}}},
      {"UTC", {{"UTC", "Coordinated Universal Time"}}},
  };
  return table;
}

bool TimeModel::isDateAndTime(const std::string& text) {
  int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0, used = 0;
  if (std::sscanf(text.c_str(), "%d-%d-%d %d:%d:%d%n", &year, &month, &day, &hour, &minute, &second,
                  &used) != 6 ||
      used != static_cast<int>(text.size())) {
    return false;
  }
  return year >= 1970 && year <= 2099 && month >= 1 && month <= 12 && day >= 1 &&
         day <= daysIn(year, month) && hour >= 0 && hour <= 23 && minute >= 0 && minute <= 59 &&
         second >= 0 && second <= 59;
}

bool TimeModel::isServerName(const std::string& text) {
  if (text.empty() || text.size() > 253) return false;
  for (char c : text) {
    if (!std::isalnum(static_cast<unsigned char>(c)) && c != '.' && c != '-') return false;
  }
  return text.front() != '.' && text.front() != '-';
}

std::vector<Command> TimeModel::writeChecks() {
  return {{"/time/dateAndTime", bind(&TimeModel::checkDateAndTime)},
          {"/time/timezone", bind(&TimeModel::checkTimezone)},
          {"/time/ntp", bind(&TimeModel::checkNtp)},
          {"/time/ntpServer", bind(&TimeModel::checkNtpServer)}};
}

void TimeModel::seed() {
  host().createIfAbsent("/time/dateAndTime", Resource());
  host().createIfAbsent("/time/timezone", followed(ResourceValue("Europe/Berlin")));
  host().createIfAbsent("/time/ntp", followed(ResourceValue(true)));
  host().createIfAbsent("/time/ntpServer", followed(ResourceValue("pool.ntp.org")));
  host().createIfAbsent("/time/ntpSynchronized", Resource(ResourceValue(true)));
  ResourceValue::Map map;
  for (const Region& region : regions()) {
    ResourceValue::Map zones;
    for (const Zone& zone : region.zones) {
      zones[zone.name] =
          ResourceValue(ResourceValue::Map{{"timezone", ResourceValue(zone.name)},
                                           {"description", ResourceValue(zone.description)}});
    }
    map[region.name] = ResourceValue(zones);
  }
  host().createIfAbsent("/time/tzmap", Resource(ResourceValue(map)));
}

void TimeModel::tick(const tavelabi::TimePoint& now) {
  {
    std::lock_guard lock(mutex_);
    if (!synchronising_) return;
    if (!since_) since_ = now;
    if (now - *since_ < std::chrono::seconds(2)) return;
    synchronising_ = false;
    since_.reset();
  }
  const std::optional<Resource> ntp = host().peek("/time/ntp");
  if (ntp && ntp->values.at("value").getBoolValue()) {
    update("/time/ntpSynchronized", Resource(ResourceValue(true)));
  }
}

Resource TimeModel::checkDateAndTime(ResourceAction& action) {
  const ResourceValue* text = setValueOf(action, ResourceValueType::STRING);
  if (!text || !isDateAndTime(text->getStringValue())) {
    return refused("Invalid date and time: " + (text ? text->getStringValue() : std::string()));
  }
  return Resource();
}

Resource TimeModel::checkTimezone(ResourceAction& action) {
  const ResourceValue* text = setValueOf(action, ResourceValueType::STRING);
  if (!text)
    return action.resource.values.count("set_value") ? refused("Unknown time zone") : Resource();
  for (const Region& region : regions()) {
    for (const Zone& zone : region.zones) {
      if (text->getStringValue() == zone.name) {
        takeAtOnce(action);
        return Resource();
      }
    }
  }
  return refused("Unknown time zone: " + text->getStringValue());
}

Resource TimeModel::checkNtp(ResourceAction& action) {
  if (!action.resource.values.count("set_value")) return Resource();
  const ResourceValue* on = setValueOf(action, ResourceValueType::BOOL);
  if (!on) return refused("NTP is switched on or off");
  takeAtOnce(action);
  // Switched on, the client synchronises after a while; switched off, it is not synchronised.
  {
    std::lock_guard lock(mutex_);
    synchronising_ = on->getBoolValue();
    since_.reset();
  }
  if (!on->getBoolValue()) update("/time/ntpSynchronized", Resource(ResourceValue(false)));
  return Resource();
}

Resource TimeModel::checkNtpServer(ResourceAction& action) {
  if (!action.resource.values.count("set_value")) return Resource();
  const ResourceValue* name = setValueOf(action, ResourceValueType::STRING);
  if (!name || !isServerName(name->getStringValue())) {
    return refused("Not a server name: " + (name ? name->getStringValue() : std::string()));
  }
  takeAtOnce(action);
  return Resource();
}

void TimeModel::update(const std::string& path, const Resource& values) {
  ResourceAction action(CCRUD::Update, path, values, nullptr, "");
  host().processInternalAction(action);
}

}  // namespace halvor::sim
