#pragma once

#include "sim/models/Model.h"
#include "tavelabi/Resource.h"

namespace halvor::sim {

// "/system/audio/inputs": the transmitter's audio inputs, each with its channels and the meter
// that shows each channel's level (meters of MeterModel). The player input has no channels of
// its own. The list does not change.
class AudioInputModel : public Model {
 public:
  static constexpr const char* kInputsPath = "/system/audio/inputs";

  std::string name() const override { return "audioInputs"; }
  void seed() override;

  // The resource that seed() creates.
  static tavelabi::Resource inputs();
};

}  // namespace halvor::sim
