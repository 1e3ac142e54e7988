#include "kelo/handlers/toolkit/QueryParameters.h"

#include <unordered_map>

#include "kelo/Exceptions.h"
#include "kelo/common/EdUrlParser.h"

namespace halvor::kelo {

std::string QueryParameters::required(const web::HttpRequestPtr& req, const std::string& name) {
  std::optional<std::string> value = optional(req, name);
  if (!value) {
    throw RequestMissingQueryParameter(name);
  }
  return std::move(*value);
}

std::optional<std::string> QueryParameters::optional(const web::HttpRequestPtr& req,
                                                     const std::string& name) {
  const std::unordered_map<std::string, std::string> query = undecoded(req);
  const auto found = query.find(name);
  if (found == query.end()) {
    return std::nullopt;
  }
  return EdUrlParser::urlDecode(found->second);
}

std::unordered_map<std::string, std::string> QueryParameters::undecoded(
    const web::HttpRequestPtr& req) {
  std::unordered_map<std::string, std::string> query;
  EdUrlParser::parseKeyValueMap(&query, req->query(), true);
  return query;
}

}  // namespace halvor::kelo
