#include "kelo/handlers/http/graphics/GetAmPmCorrectionHandler.h"

#include "kelo/handlers/http/graphics/AmPmCorrectionHelperClass.h"
#include "kelo/handlers/http/graphics/PointListWriter.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetAmPmCorrectionHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                                  web::HttpResponsePtr& resp,
                                                  tavelabi::ITavel* tavel,
                                                  tavelabi::IPluginInfo* info,
                                                  std::string sessionId) {
  // Printed from the decoded numbers: the text of the message that the helper's get makes.
  const PointColumns points =
      AmPmCorrectionHelperClass::readAmPmCorrection(req, tavel, info, sessionId, false);
  JsonReplies::replyJson(
      resp, PointListWriter::json({{protobuf::AmPmCorrection::kPointsFieldNumber, points}},
                                  protobuf::AmPmCorrection()));
}

}  // namespace halvor::kelo
