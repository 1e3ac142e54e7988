#include "kelo/handlers/ws/WsGetPresetLayout.h"

#include "halvor/protobuf/Presets.pb.h"
#include "kelo/handlers/http/presets/PresetHandlerHelpers.h"
#include "kelo/handlers/ws/WsMessages.h"

namespace halvor::kelo {

void WsGetPresetLayout::messageGenerator(const web::HttpRequestPtr& req,
                                         tavelabi::Resource& resource, std::string sessionId,
                                         std::string& message, const std::string& /*path*/) {
  const tavelabi::Resource read = WsMessages::readBypassingActivity(req, sessionId, kPattern);
  const auto given = resource.values.find("value");
  message =
      (given != resource.values.end() ? given->second : read.values.at("value")).getStringValue();
}

}  // namespace halvor::kelo
