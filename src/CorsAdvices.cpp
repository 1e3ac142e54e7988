#include "kelo/CorsAdvices.h"

namespace halvor::kelo {

web::HttpAppFramework::ResponseCreationAdvice CorsAdvices::responseCreationAdvice(
    bool bypassCors, const std::string& corsOrigin) {
  return [bypassCors, corsOrigin](const web::HttpResponsePtr& resp) {
    if (bypassCors) {
      resp->addHeader("Access-Control-Allow-Origin", corsOrigin);
      resp->addHeader("Access-Control-Allow-Credentials", "true");
    }
  };
}

void CorsAdvices::preRoutingAdvice(const web::HttpRequestPtr& req, web::AdviceCallback&& callback,
                                   web::AdviceChainCallback&& chainCallback) {
  if (req->method() != web::Options) {
    chainCallback();
    return;
  }
  auto resp = web::HttpResponse::newHttpResponse();
  resp->addHeader("Allow", "GET, PUT, PATCH, POST, DELETE, OPTIONS");
  resp->addHeader("Access-Control-Allow-Methods", "GET, PUT, PATCH, POST, DELETE, OPTIONS");
  resp->addHeader("Access-Control-Allow-Headers", "Content-Type, Accept, x-csrftoken");
  resp->addHeader("Access-Control-Allow-Credentials", "true");
  resp->setStatusCode(200);
  resp->setContentTypeCode(web::CT_TEXT_PLAIN);
  callback(resp);
}

}  // namespace halvor::kelo
