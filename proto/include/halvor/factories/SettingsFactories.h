#pragma once

#include "halvor/factories/HalvorPbFactory2.h"
#include "halvor/protobuf/Settings.pb.h"

namespace halvor::protobuf {

using HalvorPbFactory2Validations = HalvorPbFactory2<Validations>;

}  // namespace halvor::protobuf
