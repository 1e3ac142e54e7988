#include "kelo/handlers/toolkit/RequestBodies.h"

#include <json/reader.h>

#include <string>

#include "kelo/Exceptions.h"
#include "kelo/common/JsonOptions.h"

namespace halvor::kelo {

Json::Value RequestBodies::json(const web::HttpRequestPtr& req) {
  const std::string body(req->body());
  Json::Reader reader;
  Json::Value value;
  const bool parsed = reader.parse(body, value, true);
  if (body.empty()) {
    throw RequestMissingFormData("body");
  }
  if (!parsed) {
    throw InvalidJson(reader.getFormattedErrorMessages());
  }
  return value;
}

void RequestBodies::parseInto(const web::HttpRequestPtr& req, google::protobuf::Message& message) {
  (void)json(req);
  (void)JsonOptions::fromJson(std::string(req->body()), message);
}

}  // namespace halvor::kelo
