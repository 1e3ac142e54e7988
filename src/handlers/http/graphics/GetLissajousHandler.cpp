#include "kelo/handlers/http/graphics/GetLissajousHandler.h"

#include "kelo/handlers/http/graphics/LissajousHelperClass.h"
#include "kelo/handlers/http/graphics/PointListWriter.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetLissajousHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                             web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                             tavelabi::IPluginInfo* info, std::string sessionId) {
  // Printed from the decoded numbers: the text of the message that the helper's get makes.
  protobuf::Lissajous rest;
  const PointColumns points =
      LissajousHelperClass::readLissajous(req, tavel, info, sessionId, false, rest);
  JsonReplies::replyJson(
      resp, PointListWriter::json({{protobuf::Lissajous::kPointsFieldNumber, points}}, rest));
}

}  // namespace halvor::kelo
