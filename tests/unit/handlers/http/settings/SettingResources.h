#pragma once

#include <string>

#include "tavelabi/Resource.h"

namespace halvor::kelo::test {

// Host resources of the settings pages, as the host describes them.
struct SettingResources {
  using Map = tavelabi::ResourceValue::Map;

  static tavelabi::ResourceValue entry(const std::string& settingPath,
                                       const std::string& monitorPath, const std::string& label,
                                       const std::string& type,
                                       const std::string& dependentLabel = "") {
    return tavelabi::ResourceValue(Map{{"settingResource", settingPath},
                                       {"monitorResource", monitorPath},
                                       {"label", label},
                                       {"type", type},
                                       {"dependentValidationLabel", dependentLabel}});
  }

  static tavelabi::Resource collection(tavelabi::ResourceValue::List entries) {
    tavelabi::ResourceValue list;
    list.setType(tavelabi::ResourceValueType::LIST_VALUE);
    list.setList(entries);
    return tavelabi::Resource("settings", list);
  }
};

}  // namespace halvor::kelo::test
