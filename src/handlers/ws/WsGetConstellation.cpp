#include "kelo/handlers/ws/WsGetConstellation.h"

#include "kelo/KeloHost.h"
#include "kelo/handlers/http/graphics/ConstellationHelperClass.h"
#include "kelo/handlers/http/graphics/PointListWriter.h"
#include "kelo/handlers/ws/WsMessages.h"

namespace halvor::kelo {

void WsGetConstellation::messageGenerator(const web::HttpRequestPtr& req,
                                          tavelabi::Resource& /*resource*/, std::string sessionId,
                                          std::string& message, const std::string& path) {
  WsMessages::checkSession(req, sessionId, path);
  WebKeloInterface& plugin = KeloHost::plugin();
  // Written from the decoded numbers: the bytes of the message that the helper's get makes.
  const PointColumns points = ConstellationHelperClass::readConstellation(
      req, plugin.tavel, plugin.pluginInfo, sessionId, kBypassActivity);
  message = PointListWriter::wire({{protobuf::Constellation::kPointsFieldNumber, points}},
                                  protobuf::Constellation());
}

}  // namespace halvor::kelo
