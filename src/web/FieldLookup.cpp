#include "FieldLookup.h"

namespace halvor::kelo::web {

bool FieldLookup::equalsIgnoreCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    char x = a[i];
    char y = b[i];
    if (x >= 'A' && x <= 'Z') x = static_cast<char>(x - 'A' + 'a');
    if (y >= 'A' && y <= 'Z') y = static_cast<char>(y - 'A' + 'a');
    if (x != y) return false;
  }
  return true;
}

const std::string& FieldLookup::empty() {
  static const std::string kEmpty;
  return kEmpty;
}

const std::string& FieldLookup::find(const Fields& fields, std::string_view name) {
  for (const auto& field : fields) {
    if (equalsIgnoreCase(field.first, name)) return field.second;
  }
  return empty();
}

const std::string& FieldLookup::findExact(const Fields& fields, std::string_view name) {
  for (const auto& field : fields) {
    if (field.first == name) return field.second;
  }
  return empty();
}

}  // namespace halvor::kelo::web
