#include "kelo/handlers/http/graphics/ConstellationHelperClass.h"

#include "kelo/handlers/http/graphics/GraphicsChannelHelpers.h"
#include "tavelabi/ByteVectorReader.h"

namespace halvor::kelo {

void ConstellationHelperClass::appendFixedPointPairs(
    const std::vector<std::uint8_t>& block,
    google::protobuf::RepeatedPtrField<protobuf::Point>& points) {
  qvector::ByteVectorReader reader(block);
  points.Reserve(points.size() + static_cast<int>(block.size() / 8));
  while (reader.remainingBytes() >= 1) {
    const double x = reader.readSint32() * kFixedPoint24;
    const double y = reader.readSint32() * kFixedPoint24;
    protobuf::Point* point = points.Add();
    point->mutable_y()->set_value(y);
    point->mutable_x()->set_value(x);
  }
}

void ConstellationHelperClass::appendSubCarrierGroups(
    const std::vector<std::uint8_t>& block,
    google::protobuf::RepeatedPtrField<protobuf::SubCarrierGroup>& groups) {
  qvector::ByteVectorReader reader(block);
  groups.Reserve(groups.size() + static_cast<int>(block.size() / 16));
  while (reader.remainingBytes() >= 1) {
    // The head of an entry is passed over; what it holds is not shown.
    (void)reader.readUint8();
    (void)reader.readUint8();
    (void)reader.readUint16();
    // Float arithmetic on purpose: these values are float fields, scaled as floats.
    const float first = static_cast<float>(reader.readSint32()) / 1000.0F;
    const float second = static_cast<float>(reader.readSint32()) / 1000.0F;
    const float groupValue = static_cast<float>(reader.readSint16()) / 100.0F;
    const std::int16_t groupIndex = reader.readSint16();
    protobuf::SubCarrierGroup* group = groups.Add();
    group->mutable_groupindex()->set_value(groupIndex);
    group->mutable_groupvalue()->set_value(groupValue);
    group->mutable_firstvalue()->set_value(first);
    group->mutable_secondvalue()->set_value(second);
  }
}

void ConstellationHelperClass::getConstellation(
    const web::HttpRequestPtr& request, tavelabi::ITavel* tavel, tavelabi::IPluginInfo* pluginInfo,
    std::string sessionId, protobuf::Constellation& result, bool byPassSessionActivityTimerUpdate) {
  const std::vector<std::uint8_t> block = GraphicsChannelHelpers::copyBlock(
      GraphicsChannelHelpers::readChannel(request, tavel, pluginInfo, sessionId,
                                          "exConstellationData", byPassSessionActivityTimerUpdate),
      "value");
  appendFixedPointPairs(block, *result.mutable_points());
}

void ConstellationHelperClass::getSubCarriers(const web::HttpRequestPtr& request,
                                              tavelabi::ITavel* tavel,
                                              tavelabi::IPluginInfo* pluginInfo,
                                              std::string sessionId,
                                              protobuf::SubCarrierGroupList& result,
                                              bool byPassSessionActivityTimerUpdate) {
  const std::vector<std::uint8_t> block = GraphicsChannelHelpers::copyBlock(
      GraphicsChannelHelpers::readChannel(request, tavel, pluginInfo, sessionId,
                                          "exConstellationGroupData",
                                          byPassSessionActivityTimerUpdate),
      "value");
  appendSubCarrierGroups(block, *result.mutable_groups());
}

}  // namespace halvor::kelo
