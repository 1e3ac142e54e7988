#pragma once

#include "halvor/factories/HalvorPbFactory2.h"
#include "halvor/protobuf/Notifications.pb.h"

namespace halvor::protobuf {

using HalvorPbFactory2Notification = HalvorPbFactory2<Notification>;
using HalvorPbFactory2EmailServerSettings = HalvorPbFactory2<EmailServerSettings>;

}  // namespace halvor::protobuf
