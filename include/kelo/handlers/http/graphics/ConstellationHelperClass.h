#pragma once

#include <google/protobuf/repeated_ptr_field.h>

#include <cstdint>
#include <string>
#include <vector>

#include "halvor/protobuf/Graphics.pb.h"
#include "kelo/web/HttpRequest.h"
#include "tavelabi/IPluginInfo.h"
#include "tavelabi/ITavel.h"

namespace halvor::kelo {

// The signal constellation and its list of sub-carrier groups.
class ConstellationHelperClass {
 public:
  ConstellationHelperClass() = delete;

  // 2 to the power of -24: the weight of the lowest bit of a fixed-point word with 24 fraction
  // bits.
  static constexpr double kFixedPoint24 = 5.960464477539063e-08;

  // "exConstellationData" read once and decoded into `result`.
  static void getConstellation(const web::HttpRequestPtr& request, tavelabi::ITavel* tavel,
                               tavelabi::IPluginInfo* pluginInfo, std::string sessionId,
                               protobuf::Constellation& result,
                               bool byPassSessionActivityTimerUpdate);
  // "exConstellationGroupData" read once and decoded into `result`.
  static void getSubCarriers(const web::HttpRequestPtr& request, tavelabi::ITavel* tavel,
                             tavelabi::IPluginInfo* pluginInfo, std::string sessionId,
                             protobuf::SubCarrierGroupList& result,
                             bool byPassSessionActivityTimerUpdate);

  // Entries of 8 bytes: x, then y, each a signed 32-bit word with 24 fraction bits. Also the
  // layout of the Lissajous figure's points. An entry cut off by the block's end throws
  // std::out_of_range after the whole entries were appended.
  static void appendFixedPointPairs(const std::vector<std::uint8_t>& block,
                                    google::protobuf::RepeatedPtrField<protobuf::Point>& points);
  // Entries of 16 bytes: three dropped fields (1, 1 and 2 bytes), firstValue and secondValue
  // (signed 32-bit, thousandths), groupValue (signed 16-bit, hundredths) and groupIndex (signed
  // 16-bit), the scaling done in 32-bit float arithmetic. A cut-off entry throws as above.
  static void appendSubCarrierGroups(
      const std::vector<std::uint8_t>& block,
      google::protobuf::RepeatedPtrField<protobuf::SubCarrierGroup>& groups);
};

}  // namespace halvor::kelo
