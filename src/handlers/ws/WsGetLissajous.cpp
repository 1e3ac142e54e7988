#include "kelo/handlers/ws/WsGetLissajous.h"

#include "kelo/KeloHost.h"
#include "kelo/handlers/http/graphics/LissajousHelperClass.h"
#include "kelo/handlers/http/graphics/PointListWriter.h"
#include "kelo/handlers/ws/WsMessages.h"

namespace halvor::kelo {

void WsGetLissajous::messageGenerator(const web::HttpRequestPtr& req,
                                      tavelabi::Resource& /*resource*/, std::string sessionId,
                                      std::string& message, const std::string& path) {
  WsMessages::checkSession(req, sessionId, path);
  WebKeloInterface& plugin = KeloHost::plugin();
  // Written from the decoded numbers: the bytes of the message that the helper's get makes.
  protobuf::Lissajous rest;
  const PointColumns points = LissajousHelperClass::readLissajous(
      req, plugin.tavel, plugin.pluginInfo, sessionId, kBypassActivity, rest);
  message = PointListWriter::wire({{protobuf::Lissajous::kPointsFieldNumber, points}}, rest);
}

}  // namespace halvor::kelo
