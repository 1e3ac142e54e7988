#include "kelo/handlers/http/schedule/GetScheduleHandler.h"

#include <google/protobuf/util/time_util.h>

#include <regex>

#include "halvor/protobuf/Presets.pb.h"
#include "kelo/common/JsonOptions.h"
#include "kelo/common/ResourceConverter.h"
#include "kelo/handlers/http/schedule/ScheduleHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

namespace {

const std::regex kList("^.*/api/schedules$");
const std::regex kDay("^.*/api/schedules/day$");
const std::regex kSummary("^.*/api/schedules/summary$");
const std::regex kConflicts("^.*/api/schedules/conflicts$");

tavelabi::Resource command(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                           tavelabi::IPluginInfo* info, const std::string& sessionId,
                           const std::string& path, const tavelabi::ResourceValue& value) {
  KeloResourceAction action(tavelabi::CCRUD::Command, path, tavelabi::Resource(value), info,
                            sessionId, req);
  return tavel->processResourceAction(action);
}

// The names of the presets come from the last list of rules; refreshing it is that route's job.
// A preset the list lacks leaves the name absent.
template <class Message>
void namePreset(const tavelabi::ResourceValue::Map& entry, Message* message) {
  const std::string guid = std::to_string(entry.at("presetId").getIntValue());
  if (const auto name = ScheduleHelperClass::presetNameOf(guid)) {
    message->mutable_presetname()->set_value(*name);
  }
}

std::string listOfRules(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                        tavelabi::IPluginInfo* info, const std::string& sessionId) {
  ScheduleHelperClass::getPresetList(req, tavel, info, sessionId);
  const tavelabi::Resource rules = HostReads::read(req, tavel, info, sessionId, "/scheduler/rules");
  return JsonOptions::toJson(
      ScheduleHelperClass::scheduleList(req, tavel, info, sessionId, rules, true));
}

std::string activationsOfDay(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                             tavelabi::IPluginInfo* info, const std::string& sessionId) {
  const auto query = QueryParameters::undecoded(req);
  const auto date = query.find("date");
  if (date == query.end()) throw RequestMissingQueryParameter("date");
  const tavelabi::Resource answer =
      command(req, tavel, info, sessionId, "/command/scheduler/calculateActivation/day",
              tavelabi::ResourceValue(date->second));
  protobuf::PresetScheduleActivationList list;
  for (const auto& [key, value] : answer.values.at("value").getMapValue()) {
    const tavelabi::ResourceValue::Map& entry = value.getMapValue();
    protobuf::PresetScheduleActivation* activation = list.add_activations();
    // The parse's result is not looked at: a text it does not take leaves the time at zero.
    (void)google::protobuf::util::TimeUtil::FromString(entry.at("dateTime").getStringValue(),
                                                       activation->mutable_datetime());
    activation->mutable_scheduleid()->set_value(
        std::to_string(entry.at("scheduleId").getIntValue()));
    namePreset(entry, activation);
  }
  return JsonOptions::toJson(list);
}

std::string summaryOfPeriod(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                            tavelabi::IPluginInfo* info, const std::string& sessionId) {
  const auto query = QueryParameters::undecoded(req);
  const auto start = query.find("startDate");
  if (start == query.end()) throw RequestMissingQueryParameter("startDate");
  const auto end = query.find("endDate");
  if (end == query.end()) throw RequestMissingQueryParameter("endDate");
  const tavelabi::Resource answer =
      command(req, tavel, info, sessionId, "/command/scheduler/calculateActivation/summary",
              tavelabi::ResourceValue(std::vector<std::string>{start->second, end->second}));
  protobuf::PresetScheduleActivationSummaryList list;
  for (const auto& [key, value] : answer.values.at("value").getMapValue()) {
    const tavelabi::ResourceValue::Map& entry = value.getMapValue();
    protobuf::PresetScheduleActivationSummary* summary = list.add_summaries();
    summary->mutable_date()->set_value(entry.at("date").getStringValue());
    summary->mutable_scheduleid()->set_value(std::to_string(entry.at("scheduleId").getIntValue()));
    namePreset(entry, summary);
    summary->mutable_activationcount()->set_value(entry.at("activationCount").getIntValue());
  }
  return JsonOptions::toJson(list);
}

std::string conflicts(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                      tavelabi::IPluginInfo* info, const std::string& sessionId) {
  return JsonOptions::toJson(ResourceConverter::toHalvorPbResource(
      HostReads::read(req, tavel, info, sessionId, "/scheduler/conflictEvents")));
}

}  // namespace

void GetScheduleHandler::getScheduleHandler(const web::HttpRequestPtr& req,
                                            web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                            tavelabi::IPluginInfo* info, std::string sessionId) {
  const std::string path = req->path();
  std::string json;
  if (std::regex_match(path, kList)) {
    json = listOfRules(req, tavel, info, sessionId);
  } else if (std::regex_match(path, kDay)) {
    json = activationsOfDay(req, tavel, info, sessionId);
  } else if (std::regex_match(path, kSummary)) {
    json = summaryOfPeriod(req, tavel, info, sessionId);
  } else if (std::regex_match(path, kConflicts)) {
    json = conflicts(req, tavel, info, sessionId);
  } else {
    throw BadPathException(path);
  }
  JsonReplies::replyJson(resp, json);
}

}  // namespace halvor::kelo
