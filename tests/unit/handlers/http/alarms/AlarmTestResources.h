#pragma once

#include <string>
#include <vector>

#include "tavelabi/Resource.h"
#include "tavelabi/ResourceValue.h"

namespace halvor::kelo::test {

// An alarm resource as the host keeps it, every key given.
inline tavelabi::Resource fullAlarm(const std::string& path, bool value,
                                    const std::string& deviceName = "amplifier",
                                    const std::string& deviceId = "3") {
  tavelabi::Resource alarm;
  alarm.values["label"] = tavelabi::ResourceValue("Over temperature");
  alarm.values["path"] = tavelabi::ResourceValue(path);
  alarm.values["description"] = tavelabi::ResourceValue("Heat sink above 80 C");
  alarm.values["value"] = tavelabi::ResourceValue(value);
  alarm.values["deviceName"] = tavelabi::ResourceValue(deviceName);
  alarm.values["deviceId"] = tavelabi::ResourceValue(deviceId);
  alarm.values["severity"] = tavelabi::ResourceValue("REDUCED_POWER");
  alarm.values["time"] = tavelabi::ResourceValue("2026-01-31T12:34:56Z");
  return alarm;
}

// A list resource: "value" holds the texts.
inline tavelabi::Resource listOf(const std::vector<std::string>& paths) {
  return tavelabi::Resource(tavelabi::ResourceValue(paths));
}

}  // namespace halvor::kelo::test
