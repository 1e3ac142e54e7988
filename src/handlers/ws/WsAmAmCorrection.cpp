#include "kelo/handlers/ws/WsAmAmCorrection.h"

#include "kelo/KeloHost.h"
#include "kelo/handlers/http/graphics/AmAmCorrectionHelperClass.h"
#include "kelo/handlers/http/graphics/PointListWriter.h"
#include "kelo/handlers/ws/WsMessages.h"

namespace halvor::kelo {

void WsAmAmCorrection::messageGenerator(const web::HttpRequestPtr& req,
                                        tavelabi::Resource& /*resource*/, std::string sessionId,
                                        std::string& message, const std::string& path) {
  WsMessages::checkSession(req, sessionId, path);
  WebKeloInterface& plugin = KeloHost::plugin();
  // Written from the decoded numbers: the bytes of the message that the helper's get makes.
  const PointColumns points = AmAmCorrectionHelperClass::readAmAmCorrection(
      req, plugin.tavel, plugin.pluginInfo, sessionId, kBypassActivity);
  message = PointListWriter::wire({{protobuf::AmAmCorrection::kPointsFieldNumber, points}},
                                  protobuf::AmAmCorrection());
}

}  // namespace halvor::kelo
