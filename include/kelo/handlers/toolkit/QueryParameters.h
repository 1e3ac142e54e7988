#pragma once

#include <optional>
#include <string>

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
};

}  // namespace halvor::kelo
