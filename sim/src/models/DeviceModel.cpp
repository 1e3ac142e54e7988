#include "sim/models/DeviceModel.h"

#include "sim/SimTavel.h"

namespace halvor::sim {

using tavelabi::Resource;
using tavelabi::ResourceValue;

const std::vector<DemoDevice>& DeviceModel::devices() {
  static const std::vector<DemoDevice> kDevices{
      {"exciter", {"1", "2"}},
      {"amplifier", {"1", "2", "3", "4"}},
      {"powersupply", {"1", "2"}},
      {"fan", {"1", "2", "3", "4"}},
  };
  return kDevices;
}

std::string DeviceModel::typeListPath(const std::string& deviceName) {
  return "/device/" + deviceName + "/list";
}

void DeviceModel::seed() {
  std::vector<std::string> typePaths;
  for (const DemoDevice& device : devices()) {
    typePaths.push_back("/device/" + device.name);
    std::vector<std::string> devicePaths;
    for (const std::string& id : device.ids)
      devicePaths.push_back("/device/" + device.name + "/" + id);
    host().createIfAbsent(typeListPath(device.name), Resource(ResourceValue(devicePaths)));
  }
  host().createIfAbsent(kListPath, Resource(ResourceValue(typePaths)));
}

}  // namespace halvor::sim
