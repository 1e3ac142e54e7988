#include "kelo/CorsAdvices.h"

namespace halvor::kelo {

namespace {

// One field per name, whichever advice ran first: a browser reads two "Access-Control-Allow-
// Credentials" fields as "true, true" and refuses the preflight.
void setHeader(const web::HttpResponsePtr& resp, const std::string& name,
               const std::string& value) {
  resp->removeHeader(name);
  resp->addHeader(name, value);
}

}  // namespace

web::HttpAppFramework::ResponseCreationAdvice CorsAdvices::responseCreationAdvice(
    bool bypassCors, const std::string& corsOrigin) {
  return [bypassCors, corsOrigin](const web::HttpResponsePtr& resp) {
    if (bypassCors) {
      setHeader(resp, "Access-Control-Allow-Origin", corsOrigin);
      setHeader(resp, "Access-Control-Allow-Credentials", "true");
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
  setHeader(resp, "Allow", "GET, PUT, PATCH, POST, DELETE, OPTIONS");
  setHeader(resp, "Access-Control-Allow-Methods", "GET, PUT, PATCH, POST, DELETE, OPTIONS");
  setHeader(resp, "Access-Control-Allow-Headers", "Content-Type, Accept, x-csrftoken");
  setHeader(resp, "Access-Control-Allow-Credentials", "true");
  resp->setStatusCode(200);
  resp->setContentTypeCode(web::CT_TEXT_PLAIN);
  callback(resp);
}

}  // namespace halvor::kelo
