#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "halvor/protobuf/Presets.pb.h"
#include "kelo/web/HttpRequest.h"
#include "kelo/web/HttpResponse.h"
#include "tavelabi/IPluginInfo.h"
#include "tavelabi/ITavel.h"
#include "tavelabi/Resource.h"
#include "tavelabi/ResourceValue.h"

namespace halvor::kelo {

// What the preset schedule's handlers share: the rules in their message form with the names of
// their presets, the flat map the host stores for a rule, and the wait for the hardware's
// confirmation of a change.
//
// The one state of the schedule is the last preset list read from the host (presetList). Only
// the list of rules refreshes it; every other operation reads it. It is replaced whole under a
// lock and read as a snapshot, so that readers on I/O and background threads never see it
// half-written.
class ScheduleHelperClass {
 public:
  ScheduleHelperClass() = delete;

  using PresetList = std::vector<tavelabi::ResourceValue>;

  // Between two reads of the hardware's response status, and before the schedule is read back
  // after a confirmed change.
  static constexpr std::chrono::microseconds kStatusPollPeriod{100};
  static constexpr std::chrono::milliseconds kSettleTime{2000};

  // True when `days` holds the text `day`, compared exactly.
  static bool findDayOfWeek(const std::vector<tavelabi::ResourceValue>& days,
                            const std::string& day);

  // The flat map of a rule as the host stores it; absent parts count as 0, "" and false. The
  // preset's guid becomes "presetId" by std::stoi: no digits throw std::invalid_argument, a
  // number beyond int std::out_of_range; trailing text is ignored.
  static std::map<std::string, tavelabi::ResourceValue> prepareScheduleRule(
      const protobuf::PresetSchedule* rule);

  // Reads the host's preset list and makes it the new presetList.
  static void getPresetList(const web::HttpRequestPtr& req, tavelabi::ITavel* host,
                            tavelabi::IPluginInfo* plugin, const std::string& sessionId);

  // One rule as a message, read afresh from "/scheduler/rules"; its preset by guid, with the
  // sections that presetList knows of it (none when it knows nothing).
  static protobuf::PresetSchedule getCurrentPresetScheduleInfo(const web::HttpRequestPtr& req,
                                                               tavelabi::ITavel* host,
                                                               tavelabi::IPluginInfo* plugin,
                                                               const std::string& sessionId,
                                                               const std::string& ruleId);

  // Every rule of a "/scheduler/rules" answer, in key order. With `skipFailures`, a rule that
  // fails is logged and left out; without, its failure ends the list.
  static protobuf::PresetScheduleList scheduleList(
      const web::HttpRequestPtr& req, tavelabi::ITavel* host, tavelabi::IPluginInfo* plugin,
      const std::string& sessionId, const tavelabi::Resource& rules, bool skipFailures);

  // Waits until the hardware reports a response, then fills the response: 500 without a body
  // for a hardware error, otherwise (after kSettleTime) the whole schedule as JSON with 200.
  // Either way the response flag is cleared afterwards.
  static void getHardwareResponseStatus(const web::HttpRequestPtr& req, tavelabi::ITavel* host,
                                        tavelabi::IPluginInfo* plugin, const std::string& sessionId,
                                        web::HttpResponsePtr& response);

  // The name of the preset with `guid` in presetList; nothing when the list does not have it.
  // Throws std::runtime_error when the list has never been read.
  static std::optional<std::string> presetNameOf(const std::string& guid);

  // The current presetList, as one snapshot.
  static std::shared_ptr<const PresetList> presetList();
  // Replaces presetList (also for tests: an empty list is the state of a fresh start).
  static void setPresetList(PresetList presets);

 private:
  static std::mutex presetListMutex;
  static std::shared_ptr<const PresetList> presetListSnapshot;
};

}  // namespace halvor::kelo
