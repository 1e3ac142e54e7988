#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace halvor::kelo::web {

// Case-insensitive lookups in lists of (name, value) fields.
class FieldLookup {
 public:
  using Fields = std::vector<std::pair<std::string, std::string>>;

  static bool equalsIgnoreCase(std::string_view a, std::string_view b);
  // The value of the first field named `name`, or an empty string that lives forever.
  static const std::string& find(const Fields& fields, std::string_view name);
  static const std::string& empty();
  // Exact (case-sensitive) lookup, for cookies.
  static const std::string& findExact(const Fields& fields, std::string_view name);
};

}  // namespace halvor::kelo::web
