#pragma once

#include "halvor/factories/HalvorPbFactory2.h"
#include "halvor/protobuf/Settings.pb.h"

namespace halvor::protobuf {

using SettingType = QuoSetting::SettingType;

using HalvorPbFactory2Validations = HalvorPbFactory2<Validations>;
using HalvorPbFactory2ValidatedResource = HalvorPbFactory2<ValidatedResource>;
using HalvorPbFactory2QuoSetting = HalvorPbFactory2<QuoSetting>;
using HalvorPbFactory2QuoSettingCollection = HalvorPbFactory2<QuoSettingCollection>;
using HalvorPbFactory2SettingCollectionLink = HalvorPbFactory2<SettingCollectionLink>;

}  // namespace halvor::protobuf
