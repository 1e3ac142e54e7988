#pragma once

#include "halvor/factories/HalvorPbFactory2.h"
#include "halvor/protobuf/Versions.pb.h"

namespace halvor::protobuf {

using LodestarServiceState = LodestarEnums::LodestarServiceState;

using HalvorPbFactory2Version = HalvorPbFactory2<Version>;
using HalvorPbFactory2SkyRunVersions = HalvorPbFactory2<SkyRunVersions>;
// The registration's keys are the field names, each optional.
using HalvorPbFactory2LodestarSettings = HalvorPbFactory2<LodestarSettings>;
// The support state's keys are the field names.
using HalvorPbFactory2SkyRunRemoteSupport = HalvorPbFactory2<SkyRunRemoteSupport>;

}  // namespace halvor::protobuf
