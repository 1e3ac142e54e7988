#pragma once

#include "halvor/factories/HalvorPbFactory2.h"
#include "halvor/protobuf/Presets.pb.h"

namespace halvor::protobuf {

using HalvorPbFactory2BroadcastPreset = HalvorPbFactory2<BroadcastPreset>;
using HalvorPbFactory2BroadcastPresetList = HalvorPbFactory2<BroadcastPresetList>;
using HalvorPbFactory2HardWareErrorList = HalvorPbFactory2<HardWareErrorList>;

using HalvorPbFactory2PresetSchedule = HalvorPbFactory2<PresetSchedule>;
using HalvorPbFactory2PresetScheduleList = HalvorPbFactory2<PresetScheduleList>;
using HalvorPbFactory2PresetScheduleActivation = HalvorPbFactory2<PresetScheduleActivation>;
using HalvorPbFactory2PresetScheduleActivationList = HalvorPbFactory2<PresetScheduleActivationList>;
using HalvorPbFactory2PresetScheduleActivationSummary =
    HalvorPbFactory2<PresetScheduleActivationSummary>;
using HalvorPbFactory2PresetScheduleActivationSummaryList =
    HalvorPbFactory2<PresetScheduleActivationSummaryList>;

}  // namespace halvor::protobuf
