#include "kelo/handlers/http/graphics/GetAmAmCorrectionHandler.h"

#include "kelo/handlers/http/graphics/AmAmCorrectionHelperClass.h"
#include "kelo/handlers/http/graphics/PointListWriter.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetAmAmCorrectionHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                                  web::HttpResponsePtr& resp,
                                                  tavelabi::ITavel* tavel,
                                                  tavelabi::IPluginInfo* info,
                                                  std::string sessionId) {
  // Printed from the decoded numbers: the text of the message that the helper's get makes.
  const PointColumns points =
      AmAmCorrectionHelperClass::readAmAmCorrection(req, tavel, info, sessionId, false);
  JsonReplies::replyJson(
      resp, PointListWriter::json({{protobuf::AmAmCorrection::kPointsFieldNumber, points}},
                                  protobuf::AmAmCorrection()));
}

}  // namespace halvor::kelo
