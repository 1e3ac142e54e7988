#pragma once

#include <string>
#include <vector>

#include "tavelabi/Resource.h"
#include "tavelabi/ResourceValue.h"

namespace halvor::kelo::test {

// A rule as the host stores it.
inline tavelabi::ResourceValue hostRule(int presetId, std::vector<std::string> days,
                                        const std::string& start = "06:00:00") {
  using tavelabi::ResourceValue;
  ResourceValue dayList(days);
  return ResourceValue(ResourceValue::Map{{"startMonth", 1},
                                          {"startDay", 2},
                                          {"endMonth", 11},
                                          {"endDay", 30},
                                          {"startTime", start},
                                          {"endTime", "10:00:00"},
                                          {"repeatsEverySeconds", 0.0},
                                          {"selfDelete", true},
                                          {"dayOfWeek", dayList},
                                          {"presetId", presetId}});
}

inline tavelabi::Resource hostRules(tavelabi::ResourceValue::Map rules) {
  return tavelabi::Resource(tavelabi::ResourceValue(rules));
}

// A preset list as "/presets/generateList" answers it: guid -> name.
inline std::vector<tavelabi::ResourceValue> presetEntries(
    std::vector<std::pair<std::string, std::string>> presets) {
  using tavelabi::ResourceValue;
  std::vector<ResourceValue> entries;
  for (const auto& [guid, name] : presets) {
    entries.push_back(ResourceValue(ResourceValue::Map{
        {"guid", guid},
        {"value", ResourceValue(ResourceValue::Map{
                      {"presetName", ResourceValue(ResourceValue::Map{{"value", name}})}})}}));
  }
  return entries;
}

inline tavelabi::Resource presetListAnswer(
    std::vector<std::pair<std::string, std::string>> presets) {
  tavelabi::ResourceValue list;
  list.setType(tavelabi::ResourceValueType::LIST_VALUE);
  list.setList(presetEntries(std::move(presets)));
  return tavelabi::Resource(list);
}

}  // namespace halvor::kelo::test
