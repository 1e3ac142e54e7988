#include "kelo/handlers/ws/WsGetOrbanActivePreset.h"

#include "kelo/handlers/http/orban/OrbanPresetHelpers.h"
#include "kelo/handlers/ws/WsMessages.h"

namespace halvor::kelo {

tavelabi::Resource WsGetOrbanActivePreset::firstResource(const web::HttpRequestPtr& req,
                                                         const std::string& sessionId,
                                                         const std::string& path) {
  return WsMessages::readBypassingActivity(req, sessionId, path);
}

void WsGetOrbanActivePreset::messageGenerator(const web::HttpRequestPtr& req,
                                              tavelabi::Resource& resource, std::string sessionId,
                                              std::string& message, const std::string& path) {
  WsMessages::checkSession(req, sessionId, path);
  tavelabi::Resource preset = resource;
  WsMessages::serialize(*OrbanPresetHelpers::presetOf(preset), message);
}

}  // namespace halvor::kelo
