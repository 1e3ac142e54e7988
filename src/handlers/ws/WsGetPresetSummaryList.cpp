#include "kelo/handlers/ws/WsGetPresetSummaryList.h"

#include "halvor/protobuf/Presets.pb.h"
#include "kelo/handlers/http/presets/PresetHandlerHelpers.h"
#include "kelo/handlers/ws/WsMessages.h"

namespace halvor::kelo {

void WsGetPresetSummaryList::messageGenerator(const web::HttpRequestPtr& req,
                                              tavelabi::Resource& resource, std::string sessionId,
                                              std::string& message, const std::string& /*path*/) {
  const auto given = resource.values.find("value");
  if (given != resource.values.end()) {
    WsMessages::serialize(PresetHandlerHelpers::presetListOf(given->second), message);
    return;
  }
  const tavelabi::Resource read = WsMessages::readBypassingActivity(req, sessionId, kPattern);
  WsMessages::serialize(PresetHandlerHelpers::presetListOf(read.values.at("value")), message);
}

}  // namespace halvor::kelo
