#pragma once

#include "halvor/factories/HalvorPbFactory2.h"
#include "halvor/protobuf/Snmp.pb.h"

namespace halvor::protobuf {

using SNMPTrapType = SnmpEnums::SNMPTrapType;

using HalvorPbFactory2SNMPTrapSettings = HalvorPbFactory2<SNMPTrapSettings>;
using HalvorPbFactory2SNMPSettings = HalvorPbFactory2<SNMPSettings>;

}  // namespace halvor::protobuf
