#include "kelo/handlers/ws/WsGetActivePreset.h"

#include "halvor/protobuf/Presets.pb.h"
#include "kelo/handlers/http/presets/PresetHandlerHelpers.h"
#include "kelo/handlers/ws/WsMessages.h"

namespace halvor::kelo {

void WsGetActivePreset::messageGenerator(const web::HttpRequestPtr& req,
                                         tavelabi::Resource& resource, std::string sessionId,
                                         std::string& message, const std::string& /*path*/) {
  const tavelabi::Resource read = WsMessages::readBypassingActivity(req, sessionId, kPattern);
  const bool complete = resource.values.count("guid") != 0 && resource.values.count("value") != 0;
  WsMessages::serialize(PresetHandlerHelpers::presetOf(complete ? resource : read), message);
}

}  // namespace halvor::kelo
