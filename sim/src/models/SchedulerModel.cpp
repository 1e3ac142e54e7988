#include "sim/models/SchedulerModel.h"

#include <json/value.h>

#include <algorithm>
#include <cstdio>
#include <stdexcept>

#include "sim/SimTavel.h"
#include "sim/models/FixtureValues.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::sim {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceAction;
using tavelabi::ResourceValue;

namespace {

constexpr const char* kRules = "/scheduler/rules";
constexpr const char* kConflicts = "/scheduler/conflictEvents";
constexpr const char* kStatus = "/scheduler/hardwareResponseStatus";
constexpr const char* kDays[] = {"sunday",   "monday", "tuesday", "wednesday",
                                 "thursday", "friday", "saturday"};
// At most this many activations of one rule on one day, and days in one summary.
constexpr int kMaxActivations = 1440;
constexpr long kMaxSummaryDays = 366;

// Days since 1970-01-01 of a date of the proleptic Gregorian calendar.
long daysFromCivil(long y, unsigned m, unsigned d) {
  y -= m <= 2;
  const long era = (y >= 0 ? y : y - 399) / 400;
  const unsigned yoe = static_cast<unsigned>(y - era * 400);
  const unsigned doy = (153 * (m > 2 ? m - 3 : m + 9) + 2) / 5 + d - 1;
  const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + static_cast<long>(doe) - 719468;
}

struct Civil {
  long year;
  unsigned month;
  unsigned day;
};

Civil civilFromDays(long z) {
  z += 719468;
  const long era = (z >= 0 ? z : z - 146096) / 146097;
  const unsigned doe = static_cast<unsigned>(z - era * 146097);
  const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const unsigned mp = (5 * doy + 2) / 153;
  const unsigned d = doy - (153 * mp + 2) / 5 + 1;
  const unsigned m = mp < 10 ? mp + 3 : mp - 9;
  return {static_cast<long>(yoe) + era * 400 + (m <= 2), m, d};
}

std::string dateText(long dayNumber) {
  const Civil c = civilFromDays(dayNumber);
  char text[16];
  std::snprintf(text, sizeof text, "%04ld-%02u-%02u", c.year, c.month, c.day);
  return text;
}

std::string dateTimeText(long dayNumber, int seconds) {
  char text[32];
  std::snprintf(text, sizeof text, "%sT%02d:%02d:%02dZ", dateText(dayNumber).c_str(),
                seconds / 3600, seconds / 60 % 60, seconds % 60);
  return text;
}

std::string key(int index) {
  char text[16];
  std::snprintf(text, sizeof text, "%05d", index);
  return text;
}

const char* weekdayOf(long dayNumber) {
  // 1970-01-01 was a Thursday.
  return kDays[((dayNumber % 7) + 11) % 7];
}

bool holdsDay(const ResourceValue::Map& rule, const std::string& day) {
  for (const ResourceValue& entry : rule.at("dayOfWeek").getListValue()) {
    if (entry.getStringValue() == day) return true;
  }
  return false;
}

// Whether the rule holds on the date, by its calendar span and its days of the week.
bool holdsOn(const ResourceValue::Map& rule, long dayNumber) {
  const Civil c = civilFromDays(dayNumber);
  const int date = static_cast<int>(c.month) * 100 + static_cast<int>(c.day);
  const int start = rule.at("startMonth").getIntValue() * 100 + rule.at("startDay").getIntValue();
  const int end = rule.at("endMonth").getIntValue() * 100 + rule.at("endDay").getIntValue();
  const bool inSpan =
      start <= end ? (date >= start && date <= end) : (date >= start || date <= end);
  return inSpan && holdsDay(rule, weekdayOf(dayNumber));
}

// The seconds of the day at which the rule activates its preset.
std::vector<int> activationTimes(const ResourceValue::Map& rule) {
  const int start = SchedulerModel::secondsOf(rule.at("startTime").getStringValue()).value_or(0);
  const int end = SchedulerModel::secondsOf(rule.at("endTime").getStringValue()).value_or(start);
  const double repeat = rule.at("repeatsEverySeconds").getDoubleValue();
  std::vector<int> times{start};
  if (repeat < 1) return times;
  for (double t = start + repeat; t <= end && times.size() < kMaxActivations; t += repeat) {
    times.push_back(static_cast<int>(t));
  }
  return times;
}

ResourceValue listOf(ResourceValue::List entries) {
  ResourceValue list;
  list.setType(tavelabi::ResourceValueType::LIST_VALUE);
  list.setList(entries);
  return list;
}

ResourceValue::Map rule(int startMonth, int startDay, int endMonth, int endDay, const char* start,
                        const char* end, double repeat, std::vector<std::string> days,
                        int presetId) {
  return {{"startMonth", startMonth},
          {"startDay", startDay},
          {"endMonth", endMonth},
          {"endDay", endDay},
          {"startTime", start},
          {"endTime", end},
          {"repeatsEverySeconds", repeat},
          {"selfDelete", false},
          {"dayOfWeek", ResourceValue(days)},
          {"presetId", presetId}};
}

// Two rules conflict when they share a day of the week, their calendar spans meet (tried on the
// days of a leap year) and their clock spans overlap.
bool conflict(const ResourceValue::Map& a, const ResourceValue::Map& b) {
  const int aStart = SchedulerModel::secondsOf(a.at("startTime").getStringValue()).value_or(0);
  const int aEnd = SchedulerModel::secondsOf(a.at("endTime").getStringValue()).value_or(aStart);
  const int bStart = SchedulerModel::secondsOf(b.at("startTime").getStringValue()).value_or(0);
  const int bEnd = SchedulerModel::secondsOf(b.at("endTime").getStringValue()).value_or(bStart);
  if (aStart > bEnd || bStart > aEnd) return false;
  const long first = daysFromCivil(2024, 1, 1);
  for (long day = first; day < first + 366; ++day) {
    if (holdsOn(a, day) && holdsOn(b, day)) return true;
  }
  return false;
}

}  // namespace

std::optional<int> SchedulerModel::secondsOf(const std::string& time) {
  int h = 0;
  int m = 0;
  int s = 0;
  char rest = 0;
  const int read = std::sscanf(time.c_str(), "%2d:%2d:%2d%c", &h, &m, &s, &rest);
  if (read != 2 && read != 3) return std::nullopt;
  if (time.size() != (read == 2 ? 5u : 8u)) return std::nullopt;
  if (h < 0 || h > 23 || m < 0 || m > 59 || s < 0 || s > 59) return std::nullopt;
  return h * 3600 + m * 60 + s;
}

std::optional<long> SchedulerModel::dayNumberOf(const std::string& date) {
  int y = 0;
  int m = 0;
  int d = 0;
  char rest = 0;
  if (date.size() != 10 || std::sscanf(date.c_str(), "%4d-%2d-%2d%c", &y, &m, &d, &rest) != 3) {
    return std::nullopt;
  }
  if (m < 1 || m > 12 || d < 1 || d > 31) return std::nullopt;
  const long number = daysFromCivil(y, static_cast<unsigned>(m), static_cast<unsigned>(d));
  // 2023-02-30 becomes 2023-03-02: not a date.
  if (civilFromDays(number).day != static_cast<unsigned>(d)) return std::nullopt;
  return number;
}

std::vector<Command> SchedulerModel::commands() {
  return {
      {"/command/scheduler/addRule", bind(&SchedulerModel::addRule)},
      {"/command/scheduler/editRule", bind(&SchedulerModel::editRule)},
      {"/command/scheduler/deleteRule", bind(&SchedulerModel::deleteRule)},
      {"/command/scheduler/calculateActivation/day", bind(&SchedulerModel::activationsOfDay)},
      {"/command/scheduler/calculateActivation/summary", bind(&SchedulerModel::summaryOfPeriod)}};
}

void SchedulerModel::applyFixture(const Json::Value& section) {
  FixtureValues::requireObject(section, "scheduler");
  std::lock_guard lock(mutex_);
  if (section.isMember("confirmDelayMs")) {
    confirmDelay_ = FixtureValues::delay(section, "scheduler", "confirmDelayMs");
  }
  if (section.isMember("hardwareStatus")) {
    hardwareStatus_ = FixtureValues::wholeNumber(section, "scheduler", "hardwareStatus");
  }
}

void SchedulerModel::seed() {
  const std::vector<std::string> weekdays{"monday", "tuesday", "wednesday", "thursday", "friday"};
  ResourceValue::Map seeded{
      {"1", ResourceValue(rule(1, 1, 12, 31, "06:00:00", "10:00:00", 0, weekdays, 1))},
      {"2", ResourceValue(rule(1, 1, 12, 31, "18:00:00", "23:00:00", 0, weekdays, 3))},
      {"3", ResourceValue(
                rule(1, 1, 12, 31, "08:00:00", "20:00:00", 21600, {"saturday", "sunday"}, 12))},
      {"4", ResourceValue(rule(1, 1, 12, 31, "09:00:00", "09:30:00", 0, {"monday"}, 4))}};
  host().createIfAbsent(kRules, Resource(ResourceValue(seeded)));
  Resource status(ResourceValue(false));
  status.values["status"] = ResourceValue(0);
  host().createIfAbsent(kStatus, status);
  host().createIfAbsent(kConflicts, Resource(listOf({})));
  storeRules(rules());
}

void SchedulerModel::tick(const tavelabi::TimePoint& /*now*/) {
  int status = 0;
  {
    std::lock_guard lock(mutex_);
    if (!pendingStatus_ || std::chrono::steady_clock::now() < confirmAt_) return;
    status = *pendingStatus_;
    pendingStatus_.reset();
  }
  Resource answer(ResourceValue(true));
  answer.values["status"] = ResourceValue(status);
  ResourceAction action(CCRUD::Update, kStatus, answer, nullptr, "");
  host().processInternalAction(action);
}

void SchedulerModel::confirmLater(int status) {
  std::lock_guard lock(mutex_);
  pendingStatus_ = status != 0 ? status : hardwareStatus_;
  confirmAt_ = std::chrono::steady_clock::now() + confirmDelay_;
}

ResourceValue::Map SchedulerModel::rules() const {
  const std::optional<Resource> stored = host().peek(kRules);
  if (!stored || stored->values.count("value") == 0) return {};
  return stored->values.at("value").getMapValue();
}

// The rules and, worked out from them, the conflicts.
void SchedulerModel::storeRules(const ResourceValue::Map& stored) {
  ResourceValue::List conflicts;
  for (auto a = stored.begin(); a != stored.end(); ++a) {
    for (auto b = std::next(a); b != stored.end(); ++b) {
      if (!conflict(a->second.getMapValue(), b->second.getMapValue())) continue;
      conflicts.push_back(ResourceValue(ResourceValue::Map{
          {"firstRuleId", a->first},
          {"secondRuleId", b->first},
          {"description", "Rules " + a->first + " and " + b->first + " overlap"}}));
    }
  }
  ResourceAction rulesAction(CCRUD::Update, kRules, Resource(ResourceValue(stored)), nullptr, "");
  host().processInternalAction(rulesAction);
  ResourceAction conflictsAction(CCRUD::Update, kConflicts, Resource(listOf(conflicts)), nullptr,
                                 "");
  host().processInternalAction(conflictsAction);
}

bool SchedulerModel::acceptable(const ResourceValue::Map& candidate) const {
  try {
    for (const char* month : {"startMonth", "endMonth"}) {
      const int value = candidate.at(month).getIntValue();
      if (value < 1 || value > 12) return false;
    }
    for (const char* day : {"startDay", "endDay"}) {
      const int value = candidate.at(day).getIntValue();
      if (value < 1 || value > 31) return false;
    }
    const auto start = secondsOf(candidate.at("startTime").getStringValue());
    const auto end = secondsOf(candidate.at("endTime").getStringValue());
    if (!start || !end || *end < *start) return false;
    if (candidate.at("repeatsEverySeconds").getDoubleValue() < 0) return false;
    (void)candidate.at("selfDelete").getBoolValue();
    for (const ResourceValue& day : candidate.at("dayOfWeek").getListValue()) {
      if (std::find(std::begin(kDays), std::end(kDays), day.getStringValue()) == std::end(kDays)) {
        return false;
      }
    }
    const std::string preset = std::to_string(candidate.at("presetId").getIntValue());
    const std::optional<Resource> presets = host().peek("/presets/list");
    if (!presets) return true;  // without the preset model any number is taken
    for (const ResourceValue& entry : presets->values.at("value").getListValue()) {
      if (entry.getMapValue().at("guid").getStringValue() == preset) return true;
    }
    return false;
  } catch (const std::exception&) {
    return false;
  }
}

Resource SchedulerModel::addRule(ResourceAction& action) {
  ResourceValue::Map candidate = action.resource.values.at("value").getMapValue();
  if (!acceptable(candidate)) {
    confirmLater(kRefusedRule);
    return Resource("accepted", ResourceValue(false));
  }
  ResourceValue::Map stored = rules();
  int next = 1;
  for (const auto& [id, ignored] : stored) next = std::max(next, std::stoi(id) + 1);
  stored[std::to_string(next)] = ResourceValue(candidate);
  storeRules(stored);
  confirmLater(0);
  Resource answer("accepted", ResourceValue(true));
  answer.values["ruleId"] = ResourceValue(next);
  return answer;
}

Resource SchedulerModel::editRule(ResourceAction& action) {
  ResourceValue::Map candidate = action.resource.values.at("value").getMapValue();
  const auto id = candidate.find("ruleId");
  ResourceValue::Map stored = rules();
  if (id == candidate.end() || stored.count(std::to_string(id->second.getIntValue())) == 0) {
    confirmLater(kUnknownRule);
    return Resource("accepted", ResourceValue(false));
  }
  const std::string ruleId = std::to_string(id->second.getIntValue());
  candidate.erase(id);
  if (!acceptable(candidate)) {
    confirmLater(kRefusedRule);
    return Resource("accepted", ResourceValue(false));
  }
  stored[ruleId] = ResourceValue(candidate);
  storeRules(stored);
  confirmLater(0);
  return Resource("accepted", ResourceValue(true));
}

Resource SchedulerModel::deleteRule(ResourceAction& action) {
  const std::string ruleId = std::to_string(action.resource.values.at("value").getIntValue());
  ResourceValue::Map stored = rules();
  if (stored.erase(ruleId) == 0) {
    confirmLater(kUnknownRule);
    return Resource("accepted", ResourceValue(false));
  }
  storeRules(stored);
  confirmLater(0);
  return Resource("accepted", ResourceValue(true));
}

Resource SchedulerModel::activationsOfDay(ResourceAction& action) {
  const std::string date = action.resource.values.at("value").getStringValue();
  const std::optional<long> day = dayNumberOf(date);
  if (!day) throw std::invalid_argument("Not a date (YYYY-MM-DD): " + date);
  // In time order; rules activating at the same second in the order of their ids.
  std::vector<std::pair<int, ResourceValue::Map>> found;
  for (const auto& [ruleId, value] : rules()) {
    const ResourceValue::Map& entry = value.getMapValue();
    if (!holdsOn(entry, *day)) continue;
    for (int seconds : activationTimes(entry)) {
      found.push_back({seconds, ResourceValue::Map{{"dateTime", dateTimeText(*day, seconds)},
                                                   {"scheduleId", std::stoi(ruleId)},
                                                   {"presetId", entry.at("presetId")}}});
    }
  }
  std::stable_sort(found.begin(), found.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  ResourceValue::Map answer;
  for (std::size_t i = 0; i < found.size(); ++i) {
    answer[key(static_cast<int>(i))] = ResourceValue(found[i].second);
  }
  return Resource(ResourceValue(answer));
}

Resource SchedulerModel::summaryOfPeriod(ResourceAction& action) {
  const ResourceValue::List& dates = action.resource.values.at("value").getListValue();
  if (dates.size() != 2) throw std::invalid_argument("A period is a start date and an end date");
  const std::optional<long> first = dayNumberOf(dates[0].getStringValue());
  const std::optional<long> last = dayNumberOf(dates[1].getStringValue());
  if (!first || !last || *last < *first || *last - *first >= kMaxSummaryDays) {
    throw std::invalid_argument("Not a period of at most 366 days: " + dates[0].getStringValue() +
                                " to " + dates[1].getStringValue());
  }
  const ResourceValue::Map stored = rules();
  ResourceValue::Map answer;
  int index = 0;
  for (long day = *first; day <= *last; ++day) {
    for (const auto& [ruleId, value] : stored) {
      const ResourceValue::Map& entry = value.getMapValue();
      if (!holdsOn(entry, day)) continue;
      answer[key(index++)] = ResourceValue(
          ResourceValue::Map{{"date", dateText(day)},
                             {"scheduleId", std::stoi(ruleId)},
                             {"presetId", entry.at("presetId")},
                             {"activationCount", static_cast<int>(activationTimes(entry).size())}});
    }
  }
  return Resource(ResourceValue(answer));
}

}  // namespace halvor::sim
