#include "kelo/handlers/toolkit/JsonReplies.h"

#include <utility>

#include "halvor/protobuf/Resource.pb.h"
#include "kelo/common/JsonOptions.h"
#include "kelo/common/ResourceConverter.h"
#include "kelo/common/ResourceJsonWriter.h"

namespace halvor::kelo {

void JsonReplies::reply(web::HttpResponsePtr& resp, const google::protobuf::Message& message) {
  replyJson(resp, JsonOptions::toJson(message));
}

void JsonReplies::replyWithDefaults(web::HttpResponsePtr& resp,
                                    const google::protobuf::Message& message) {
  replyJson(resp, JsonOptions::toJsonWithPrimitives(message));
}

void JsonReplies::replyWithResource(web::HttpResponsePtr& resp, tavelabi::Resource resource) {
  replyJson(resp, resourceJson(std::move(resource)));
}

void JsonReplies::replyJson(web::HttpResponsePtr& resp, std::string json) {
  setJson(resp, std::move(json));
  resp->setStatusCode(web::k200OK);
}

void JsonReplies::setJson(web::HttpResponsePtr& resp, std::string json) {
  resp->setContentTypeCode(web::CT_APPLICATION_JSON);
  resp->setBody(std::move(json));
}

// ResourceJsonWriter prints the same text as the shared print options, faster.
std::string JsonReplies::resourceJson(tavelabi::Resource resource) {
  const protobuf::Resource message = ResourceConverter::toHalvorPbResource(std::move(resource));
  return ResourceJsonWriter::print(message);
}

}  // namespace halvor::kelo
