#pragma once

#include "halvor/factories/HalvorPbFactory2.h"
#include "halvor/protobuf/Processor.pb.h"

namespace halvor::protobuf {

// A preset resource must hold every key of the message: the rules make a missing one throw.
using HalvorPbFactory2OrbanPresetName = HalvorPbFactory2<OrbanPresetName>;
using HalvorPbFactory2OrbanPresetNameList = HalvorPbFactory2<OrbanPresetNameList>;
using HalvorPbFactory2OrbanControl = HalvorPbFactory2<OrbanControl>;

}  // namespace halvor::protobuf
