#include "kelo/handlers/http/graphics/LissajousHelperClass.h"

#include "kelo/handlers/http/graphics/ConstellationHelperClass.h"
#include "kelo/handlers/http/graphics/GraphicsChannelHelpers.h"
#include "tavelabi/ByteVectorReader.h"

namespace halvor::kelo {

namespace {

constexpr unsigned long kHeaderSkip = 12;

}  // namespace

void LissajousHelperClass::readHeader(const std::vector<std::uint8_t>& header,
                                      protobuf::Lissajous& result) {
  // The reader refuses a position past the end, so a header of fewer than 12 bytes is told
  // apart before the skip: it holds no word either.
  if (header.size() < kHeaderSkip) return;
  qvector::ByteVectorReader reader(header);
  reader.setReadPosition(kHeaderSkip);
  if (reader.remainingBytes() > 1) {
    // Stored unsigned: 65535 stays 65535.
    result.mutable_headervalue()->set_value(static_cast<std::int32_t>(reader.readUint16()));
  }
}

void LissajousHelperClass::getLissajous(const web::HttpRequestPtr& request, tavelabi::ITavel* tavel,
                                        tavelabi::IPluginInfo* pluginInfo, std::string sessionId,
                                        protobuf::Lissajous& result,
                                        bool byPassSessionActivityTimerUpdate) {
  const tavelabi::Resource answer = GraphicsChannelHelpers::readChannel(
      request, tavel, pluginInfo, sessionId, "exLissajousData", byPassSessionActivityTimerUpdate);
  readHeader(GraphicsChannelHelpers::copyBlock(answer, "header"), result);
  const std::vector<std::uint8_t> block = GraphicsChannelHelpers::copyBlock(answer, "value");
  ConstellationHelperClass::appendFixedPointPairs(block, *result.mutable_points());
}

}  // namespace halvor::kelo
