#pragma once

#include <optional>
#include <string>
#include <unordered_map>

#include "kelo/web/HttpRequest.h"

namespace halvor::kelo {

// Query parameters as every handler reads them: the query string split by the strict URL parser,
// then the value percent-decoded. The strict parser drops a pair whose key or value is empty, so
// "id=" has no "id"; a value that decodes to nothing ("id=%zz") is a value like any other.
class QueryParameters {
 public:
  QueryParameters() = delete;

  // Throws RequestMissingQueryParameter(name) when the query has no such key.
  static std::string required(const web::HttpRequestPtr& req, const std::string& name);
  static std::optional<std::string> optional(const web::HttpRequestPtr& req,
                                             const std::string& name);
  // The whole query on the same strict parser, values still percent-coded, for the handlers
  // that copy the query into links of their answer.
  static std::unordered_map<std::string, std::string> undecoded(const web::HttpRequestPtr& req);
};

}  // namespace halvor::kelo
