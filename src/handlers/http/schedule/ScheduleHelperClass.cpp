#include "kelo/handlers/http/schedule/ScheduleHelperClass.h"

#include <boost/exception/diagnostic_information.hpp>
#include <cerrno>
#include <stdexcept>
#include <thread>
#include <utility>

#include "halvor/factories/PresetsFactories.h"
#include "kelo/KeloLog.h"
#include "kelo/common/JsonOptions.h"
#include "kelo/handlers/http/KeloResourceAction.h"
#include "kelo/handlers/http/presets/PresetHandlerHelpers.h"
#include "kelo/handlers/toolkit/BackgroundConfirmation.h"
#include "tavelabi/HardwareInterfaceError.h"

namespace halvor::kelo {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;

std::mutex ScheduleHelperClass::presetListMutex;
std::shared_ptr<const ScheduleHelperClass::PresetList> ScheduleHelperClass::presetListSnapshot =
    std::make_shared<const PresetList>();

namespace {

constexpr const char* kRules = "/scheduler/rules";
constexpr const char* kResponseStatus = "/scheduler/hardwareResponseStatus";

// The days in the order the host lists them.
constexpr const char* kDays[] = {"sunday",   "monday", "tuesday", "wednesday",
                                 "thursday", "friday", "saturday"};

// std::stoi as the rule's preset number, leaving the caller's errno as it was.
int presetNumber(const std::string& guid) {
  const int saved = errno;
  try {
    const int number = std::stoi(guid, nullptr, 10);
    errno = saved;
    return number;
  } catch (...) {
    errno = saved;
    throw;
  }
}

bool dayFlag(const protobuf::PresetSchedule& rule, const std::string& day) {
  if (day == "sunday") return rule.sunday().value();
  if (day == "monday") return rule.monday().value();
  if (day == "tuesday") return rule.tuesday().value();
  if (day == "wednesday") return rule.wednesday().value();
  if (day == "thursday") return rule.thursday().value();
  if (day == "friday") return rule.friday().value();
  return rule.saturday().value();
}

Resource readRules(const web::HttpRequestPtr& req, tavelabi::ITavel* host,
                   tavelabi::IPluginInfo* plugin, const std::string& sessionId) {
  KeloResourceAction action(CCRUD::Read, kRules, plugin, sessionId, req);
  return host->processResourceAction(action);
}

}  // namespace

bool ScheduleHelperClass::findDayOfWeek(const std::vector<ResourceValue>& days,
                                        const std::string& day) {
  bool found = false;
  for (const ResourceValue& entry : days) {
    if (entry.getStringValue() == day) found = true;
  }
  return found;
}

std::map<std::string, ResourceValue> ScheduleHelperClass::prepareScheduleRule(
    const protobuf::PresetSchedule* rule) {
  std::map<std::string, ResourceValue> flat;
  flat["startMonth"] = ResourceValue(rule->startmonth().value());
  flat["startDay"] = ResourceValue(rule->startday().value());
  flat["endMonth"] = ResourceValue(rule->endmonth().value());
  flat["endDay"] = ResourceValue(rule->endday().value());
  flat["startTime"] = ResourceValue(rule->starttime().value());
  flat["endTime"] = ResourceValue(rule->endtime().value());
  flat["presetId"] = ResourceValue(presetNumber(rule->broadcastpreset().guid().value()));
  flat["selfDelete"] = ResourceValue(rule->selfdelete().value());
  flat["repeatsEverySeconds"] = ResourceValue(rule->repeatseveryseconds().value());
  std::vector<std::string> days;
  for (const char* day : kDays) {
    if (dayFlag(*rule, day)) days.emplace_back(day);
  }
  ResourceValue list(days);
  if (days.empty()) list.setType(tavelabi::ResourceValueType::LIST_VALUE);
  flat["dayOfWeek"] = list;
  return flat;
}

void ScheduleHelperClass::getPresetList(const web::HttpRequestPtr& req, tavelabi::ITavel* host,
                                        tavelabi::IPluginInfo* plugin,
                                        const std::string& sessionId) {
  KeloResourceAction action(CCRUD::Command, "/presets/generateList", plugin, sessionId, req);
  const Resource answer = host->processResourceAction(action);
  setPresetList(answer.values.at("value").getListValue());
}

protobuf::PresetSchedule ScheduleHelperClass::getCurrentPresetScheduleInfo(
    const web::HttpRequestPtr& req, tavelabi::ITavel* host, tavelabi::IPluginInfo* plugin,
    const std::string& sessionId, const std::string& ruleId) {
  const Resource rules = readRules(req, host, plugin, sessionId);
  const ResourceValue::Map& rule = rules.values.at("value").getMapValue().at(ruleId).getMapValue();

  protobuf::HalvorPbFactory2PresetSchedule factory;
  for (const char* key : {"startMonth", "startDay", "endMonth", "endDay", "startTime", "endTime",
                          "repeatsEverySeconds", "selfDelete"}) {
    factory.setOverride(key, rule.at(key));
  }
  factory.setOverride("guid", ResourceValue(ruleId));
  const std::vector<ResourceValue>& days = rule.at("dayOfWeek").getListValue();
  protobuf::PresetSchedule& fields = factory.overrides();
  fields.mutable_monday()->set_value(findDayOfWeek(days, "monday"));
  fields.mutable_tuesday()->set_value(findDayOfWeek(days, "tuesday"));
  fields.mutable_wednesday()->set_value(findDayOfWeek(days, "wednesday"));
  fields.mutable_thursday()->set_value(findDayOfWeek(days, "thursday"));
  fields.mutable_friday()->set_value(findDayOfWeek(days, "friday"));
  fields.mutable_saturday()->set_value(findDayOfWeek(days, "saturday"));
  fields.mutable_sunday()->set_value(findDayOfWeek(days, "sunday"));

  // The preset by its number as text; its sections only as far as the last list knows them.
  const std::string guid = std::to_string(rule.at("presetId").getIntValue());
  std::map<std::string, ResourceValue> sections;
  const std::shared_ptr<const PresetList> presets = presetList();
  for (const ResourceValue& preset : *presets) {
    const ResourceValue::Map& entry = preset.getMapValue();
    if (entry.at("guid").getStringValue() == guid) {
      sections = entry.at("value").getMapValue();
      break;
    }
  }
  *fields.mutable_broadcastpreset() =
      PresetHandlerHelpers::makeBroadcastPreset(ResourceValue(guid), sections);
  return *factory.build(nullptr);
}

protobuf::PresetScheduleList ScheduleHelperClass::scheduleList(
    const web::HttpRequestPtr& req, tavelabi::ITavel* host, tavelabi::IPluginInfo* plugin,
    const std::string& sessionId, const Resource& rules, bool skipFailures) {
  protobuf::PresetScheduleList list;
  for (const auto& [ruleId, rule] : rules.values.at("value").getMapValue()) {
    try {
      *list.add_schedules() = getCurrentPresetScheduleInfo(req, host, plugin, sessionId, ruleId);
    } catch (...) {
      if (!skipFailures) throw;
      KELO_LOG(ERROR, plugin->getLoggerId()) << boost::current_exception_diagnostic_information();
    }
  }
  return list;
}

void ScheduleHelperClass::getHardwareResponseStatus(const web::HttpRequestPtr& req,
                                                    tavelabi::ITavel* host,
                                                    tavelabi::IPluginInfo* plugin,
                                                    const std::string& sessionId,
                                                    web::HttpResponsePtr& response) {
  Resource status;
  while (true) {
    KeloResourceAction read(CCRUD::Read, kResponseStatus, plugin, sessionId, req);
    status = host->processResourceAction(read);
    if (status.values.at("value").getBoolValue()) break;
    std::this_thread::sleep_for(kStatusPollPeriod);
  }
  tavelabi::HardwareInterfaceError errors;
  if (errors.mapping(status.values.at("status").getIntValue()) != 0) {
    response->setStatusCode(web::k500InternalServerError);
  } else {
    BackgroundConfirmation::pause(kSettleTime);
    const Resource rules = readRules(req, host, plugin, sessionId);
    const protobuf::PresetScheduleList list =
        scheduleList(req, host, plugin, sessionId, rules, false);
    response->setContentTypeCode(web::CT_APPLICATION_JSON);
    response->setBody(JsonOptions::toJson(list));
    response->setStatusCode(web::k200OK);
  }
  // The confirmation is taken: the flag goes back for the next change.
  KeloResourceAction clear(CCRUD::Update, kResponseStatus, Resource(ResourceValue(false)), plugin,
                           sessionId, req);
  host->processResourceAction(clear);
}

std::optional<std::string> ScheduleHelperClass::presetNameOf(const std::string& guid) {
  const std::shared_ptr<const PresetList> presets = presetList();
  if (presets->empty()) {
    throw std::runtime_error(
        "presetList is not prepared, make sure ScheduleHelperClass::getPresetList is called "
        "first");
  }
  for (const ResourceValue& preset : *presets) {
    const ResourceValue::Map& entry = preset.getMapValue();
    if (entry.at("guid").getStringValue() == guid) {
      return entry.at("value")
          .getMapValue()
          .at("presetName")
          .getMapValue()
          .at("value")
          .getStringValue();
    }
  }
  return std::nullopt;
}

std::shared_ptr<const ScheduleHelperClass::PresetList> ScheduleHelperClass::presetList() {
  std::lock_guard lock(presetListMutex);
  return presetListSnapshot;
}

void ScheduleHelperClass::setPresetList(PresetList presets) {
  auto fresh = std::make_shared<const PresetList>(std::move(presets));
  std::lock_guard lock(presetListMutex);
  presetListSnapshot = std::move(fresh);
}

}  // namespace halvor::kelo
