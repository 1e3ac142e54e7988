#include "kelo/handlers/http/graphics/GetConstellationHandler.h"

#include "kelo/handlers/http/graphics/ConstellationHelperClass.h"
#include "kelo/handlers/http/graphics/PointListWriter.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetConstellationHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                                 web::HttpResponsePtr& resp,
                                                 tavelabi::ITavel* tavel,
                                                 tavelabi::IPluginInfo* info,
                                                 std::string sessionId) {
  // Printed from the decoded numbers: the text of the message that the helper's get makes.
  const PointColumns points =
      ConstellationHelperClass::readConstellation(req, tavel, info, sessionId, false);
  JsonReplies::replyJson(
      resp, PointListWriter::json({{protobuf::Constellation::kPointsFieldNumber, points}},
                                  protobuf::Constellation()));
}

}  // namespace halvor::kelo
