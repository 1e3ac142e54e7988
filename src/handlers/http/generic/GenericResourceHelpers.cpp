#include "kelo/handlers/http/generic/GenericResourceHelpers.h"

#include <unordered_map>
#include <utility>

#include "halvor/protobuf/Resource.pb.h"
#include "kelo/Exceptions.h"
#include "kelo/common/EdUrlParser.h"
#include "kelo/common/JsonOptions.h"
#include "kelo/common/ResourceConverter.h"
#include "kelo/common/ResourceJsonWriter.h"

namespace halvor::kelo {

std::string GenericResourceHelpers::resourcePath(const web::HttpRequestPtr& req) {
  std::unordered_map<std::string, std::string> query;
  EdUrlParser::parseKeyValueMap(&query, req->query(), true);
  const auto path = query.find("path");
  if (path == query.end()) {
    throw RequestMissingQueryParameter("path");
  }
  return EdUrlParser::urlDecode(path->second);
}

tavelabi::Resource GenericResourceHelpers::bodyResource(const web::HttpRequestPtr& req) {
  const std::string body(req->body());
  protobuf::Resource message;
  (void)JsonOptions::fromJson(body, message);
  return ResourceConverter::toTavelAbiResource(std::move(message));
}

std::string GenericResourceHelpers::answerJson(tavelabi::Resource answer) {
  const protobuf::Resource message = ResourceConverter::toHalvorPbResource(std::move(answer));
  return ResourceJsonWriter::print(message);
}

}  // namespace halvor::kelo
