#pragma once

#include "halvor/factories/HalvorPbFactory2.h"
#include "halvor/protobuf/Users.pb.h"

namespace halvor::protobuf {

using HalvorPbFactory2Role = HalvorPbFactory2<Role>;
using HalvorPbFactory2RoleList = HalvorPbFactory2<RoleList>;
using HalvorPbFactory2User = HalvorPbFactory2<User>;
using HalvorPbFactory2UserList = HalvorPbFactory2<UserList>;
using HalvorPbFactory2UserPreferences = HalvorPbFactory2<UserPreferences>;
using HalvorPbFactory2DashboardLayoutPreference = HalvorPbFactory2<DashboardLayoutPreference>;
using HalvorPbFactory2ChangePassword = HalvorPbFactory2<ChangePassword>;
using HalvorPbFactory2Login = HalvorPbFactory2<Login>;

}  // namespace halvor::protobuf
