#pragma once

#include "halvor/factories/HalvorPbFactory2.h"
#include "halvor/protobuf/Platform.pb.h"

namespace halvor::protobuf {

// Both are built from overrides, one read per field.
using HalvorPbFactory2NetworkSettings = HalvorPbFactory2<NetworkSettings>;
using HalvorPbFactory2QCoreSettings = HalvorPbFactory2<QCoreSettings>;

}  // namespace halvor::protobuf
