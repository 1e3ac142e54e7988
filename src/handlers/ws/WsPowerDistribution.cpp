#include "kelo/handlers/ws/WsPowerDistribution.h"

#include "kelo/KeloHost.h"
#include "kelo/handlers/http/graphics/PointListWriter.h"
#include "kelo/handlers/http/graphics/PowerDistributionHelperClass.h"
#include "kelo/handlers/ws/WsMessages.h"

namespace halvor::kelo {

void WsPowerDistribution::messageGenerator(const web::HttpRequestPtr& req,
                                           tavelabi::Resource& /*resource*/, std::string sessionId,
                                           std::string& message, const std::string& path) {
  WsMessages::checkSession(req, sessionId, path);
  WebKeloInterface& plugin = KeloHost::plugin();
  // Written from the decoded numbers: the bytes of the message that the helper's get makes.
  const PointColumns points = PowerDistributionHelperClass::readPowerDistribution(
      req, plugin.tavel, plugin.pluginInfo, sessionId, kBypassActivity);
  message = PointListWriter::wire({{protobuf::PowerDistribution::kPointsFieldNumber, points}},
                                  protobuf::PowerDistribution());
}

}  // namespace halvor::kelo
