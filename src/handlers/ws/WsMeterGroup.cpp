#include "kelo/handlers/ws/WsMeterGroup.h"

#include <utility>

#include "kelo/handlers/http/meters/MeterEndpointHelperClass.h"
#include "kelo/handlers/toolkit/QueryParameters.h"
#include "kelo/handlers/ws/WsMessages.h"

namespace halvor::kelo {

std::string WsMeterGroup::subscribedPattern(const web::HttpRequestPtr& req) {
  return QueryParameters::required(req, "path") + "/**";
}

void WsMeterGroup::initialSetupAndMessage(const web::HttpRequestPtr& req,
                                          const web::WebSocketConnectionPtr& conn,
                                          std::string sessionId) {
  const std::string pattern = subscribedPattern(req);
  conn->send(std::string(), web::WebSocketMessageType::Binary);
  KeloWsFrame::subscribe(req, conn, &WsMeterGroup::messageGenerator, pattern, sessionId,
                         messageFromResourceOnly<WsMeterGroup>());
}

void WsMeterGroup::messageGenerator(const web::HttpRequestPtr& /*req*/,
                                    tavelabi::Resource& resource, std::string /*sessionId*/,
                                    std::string& message, const std::string& /*path*/) {
  tavelabi::Resource copy = resource;
  WsMessages::serialize(*MeterEndpointHelperClass::convertMeterToHalvorPbMeter(std::move(copy)),
                        message);
}

}  // namespace halvor::kelo
