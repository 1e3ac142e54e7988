#pragma once

#include "halvor/factories/HalvorPbFactory2.h"
#include "halvor/protobuf/RemoteIo.pb.h"

namespace halvor::protobuf {

using RemoteIoType = RemoteIoEnums::RemoteIoType;

// An analog output is read with every key mandatory; "set_value" feeds setValue (rule table).
using HalvorPbFactory2AnalogOutput = HalvorPbFactory2<AnalogOutput>;

}  // namespace halvor::protobuf
