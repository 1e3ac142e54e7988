#pragma once

#include <string>
#include <vector>

#include "sim/models/Model.h"

namespace halvor::sim {

// The devices of the demo transmitter, by device name and the ids of that name. Alarms, meters
// and events name their device from this set with "deviceName" and "deviceId".
struct DemoDevice {
  std::string name;
  std::vector<std::string> ids;
};

// The device lists: "/device/list" holds "/device/<name>" for every device name, and
// "/device/<name>/list" holds "/device/<name>/<id>" for every device of that name. They do not
// change while the transmitter runs.
class DeviceModel : public Model {
 public:
  static constexpr const char* kListPath = "/device/list";

  // exciter 1-2, amplifier 1-4, powersupply 1-2, fan 1-4, in this order.
  static const std::vector<DemoDevice>& devices();
  static std::string typeListPath(const std::string& deviceName);

  std::string name() const override { return "devices"; }
  // Every list, where a fixture has not put it already.
  void seed() override;
};

}  // namespace halvor::sim
