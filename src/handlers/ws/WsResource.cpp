#include "kelo/handlers/ws/WsResource.h"

#include "halvor/protobuf/Resource.pb.h"
#include "kelo/common/ResourceConverter.h"
#include "kelo/handlers/toolkit/QueryParameters.h"
#include "kelo/handlers/ws/WsMessages.h"

namespace halvor::kelo {

std::string WsResource::subscribedPattern(const web::HttpRequestPtr& req) {
  return QueryParameters::required(req, "path");
}

tavelabi::Resource WsResource::firstResource(const web::HttpRequestPtr& req,
                                             const std::string& sessionId,
                                             const std::string& path) {
  return WsMessages::readBypassingActivity(req, sessionId, path);
}

void WsResource::messageGenerator(const web::HttpRequestPtr& req, tavelabi::Resource& resource,
                                  std::string sessionId, std::string& message,
                                  const std::string& path) {
  WsMessages::checkSession(req, sessionId, path);
  WsMessages::serialize(ResourceConverter::toHalvorPbResource(resource), message);
}

}  // namespace halvor::kelo
