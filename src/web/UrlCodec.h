#pragma once

#include <string>
#include <string_view>

namespace halvor::kelo::web {

// Percent-decoding of paths and query components.
class UrlCodec {
 public:
  // Appends the decoded `text` to `out`. False on a malformed escape ("%", "%4", "%zz"); `out`
  // then holds a partial result.
  static bool decode(std::string_view text, bool plusAsSpace, std::string& out);
  // The decoded value of `name` in a raw query string ("a=1&b=x%20y"); "" when absent.
  static std::string queryParameter(std::string_view query, std::string_view name);
};

}  // namespace halvor::kelo::web
