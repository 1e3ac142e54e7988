#include "kelo/handlers/http/graphics/GetPowerDistributionHandler.h"

#include "kelo/handlers/http/graphics/PointListWriter.h"
#include "kelo/handlers/http/graphics/PowerDistributionHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetPowerDistributionHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                                     web::HttpResponsePtr& resp,
                                                     tavelabi::ITavel* tavel,
                                                     tavelabi::IPluginInfo* info,
                                                     std::string sessionId) {
  // Printed from the decoded numbers: the text of the message that the helper's get makes.
  const PointColumns points =
      PowerDistributionHelperClass::readPowerDistribution(req, tavel, info, sessionId, false);
  JsonReplies::replyJson(
      resp, PointListWriter::json({{protobuf::PowerDistribution::kPointsFieldNumber, points}},
                                  protobuf::PowerDistribution()));
}

}  // namespace halvor::kelo
