#pragma once

#include <string>
#include <utility>
#include <vector>

#include "kelo/handlers/toolkit/HostReads.h"
#include "tavelabi/Resource.h"
#include "tavelabi/ResourceAction.h"
#include "tavelabi/ResourceValue.h"

namespace halvor::kelo::test {

// Host resources of a meter tree as the transmitter gives them.
struct MeterResources {
  // A collection or group: the paths of its children in "value", and its own keys.
  static tavelabi::Resource listing(const std::vector<std::string>& children,
                                    std::vector<std::pair<std::string, std::string>> keys = {}) {
    tavelabi::Resource resource{tavelabi::ResourceValue(children)};
    for (auto& [key, text] : keys) resource.values[key] = tavelabi::ResourceValue(text);
    return resource;
  }

  // A meter with a Double reading and its display keys.
  static tavelabi::Resource meter(const std::string& path, double reading) {
    tavelabi::Resource resource{tavelabi::ResourceValue(reading)};
    resource.values["guid"] = tavelabi::ResourceValue("guid-of-" + path);
    resource.values["path"] = tavelabi::ResourceValue(path);
    resource.values["label"] = tavelabi::ResourceValue(std::string("Forward power"));
    resource.values["units"] = tavelabi::ResourceValue(std::string("W"));
    resource.values["min"] = tavelabi::ResourceValue(0.0);
    resource.values["max"] = tavelabi::ResourceValue(6000.0);
    resource.values["digitsToDisplay"] = tavelabi::ResourceValue(1);
    resource.values["deviceName"] = tavelabi::ResourceValue(std::string("amplifier"));
    resource.values["deviceId"] = tavelabi::ResourceValue(std::string("3"));
    return resource;
  }

  // The activity flag a read carried: true or false, or -1 when it carried none.
  static int flagOf(const tavelabi::ResourceAction& action) {
    const auto flag = action.resource.values.find(HostReads::kBypassKey);
    if (flag == action.resource.values.end()) return -1;
    return flag->second.getBoolValue() ? 1 : 0;
  }
};

}  // namespace halvor::kelo::test
