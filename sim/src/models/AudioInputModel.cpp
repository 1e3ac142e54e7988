#include "sim/models/AudioInputModel.h"

#include <string>
#include <utility>
#include <vector>

#include "sim/SimTavel.h"

namespace halvor::sim {

using tavelabi::Resource;
using tavelabi::ResourceValue;

namespace {

ResourceValue channel(const std::string& label, const std::string& meterPath) {
  return ResourceValue(
      ResourceValue::Map{{"label", ResourceValue(label)}, {"meterPath", ResourceValue(meterPath)}});
}

ResourceValue input(const std::string& name, std::vector<ResourceValue> channels) {
  ResourceValue list;
  list.setType(tavelabi::ResourceValueType::LIST_VALUE);
  list.setList(std::move(channels));
  return ResourceValue(ResourceValue::Map{{"name", ResourceValue(name)}, {"channels", list}});
}

ResourceValue stereo(const std::string& name, const std::string& group) {
  return input(name, {channel("Left", "/meters/audio/" + group + "/left"),
                      channel("Right", "/meters/audio/" + group + "/right")});
}

}  // namespace

void AudioInputModel::seed() { host().createIfAbsent(kInputsPath, inputs()); }

Resource AudioInputModel::inputs() {
  std::vector<ResourceValue> all{
      stereo("Analog", "analog"),
      stereo("AES 1", "aes1"),
      stereo("AES 2", "aes2"),
      input("MPX", {channel("MPX", "/meters/audio/mpx/deviation")}),
  };
  // The internal player feeds the AES paths and has no level meters of its own.
  all.push_back(ResourceValue(ResourceValue::Map{{"name", ResourceValue("Audio player")}}));
  ResourceValue list;
  list.setType(tavelabi::ResourceValueType::LIST_VALUE);
  list.setList(std::move(all));
  return Resource(list);
}

}  // namespace halvor::sim
