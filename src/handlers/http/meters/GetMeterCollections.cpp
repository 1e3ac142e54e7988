#include "kelo/handlers/http/meters/GetMeterCollections.h"

#include "kelo/handlers/http/meters/MeterEndpointHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetMeterCollections::processHttpRequest(const web::HttpRequestPtr& req,
                                             web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                             tavelabi::IPluginInfo* info, std::string sessionId) {
  const std::string path = QueryParameters::required(req, "path");
  // A person asked for this page: the reads count as activity of the session.
  JsonReplies::reply(resp, *MeterEndpointHelperClass::getCurrentMeterCollectionInfo(
                               req, tavel, info, path, sessionId, false));
}

}  // namespace halvor::kelo
