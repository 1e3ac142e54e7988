#pragma once

#include <cctype>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace halvor::kelo {

// The name table of an enumeration declared with KELO_NAMED_ENUM: its rows in declaration order,
// read once from the enumerator list as written ("FM = 0, HD = 1").
template <class Enum>
class NamedEnumTable {
 public:
  using Row = std::pair<Enum, std::string>;

  explicit NamedEnumTable(std::string_view enumerators) {
    while (!enumerators.empty()) {
      const std::size_t comma = enumerators.find(',');
      addRow(enumerators.substr(0, comma));
      if (comma == std::string_view::npos) break;
      enumerators.remove_prefix(comma + 1);
    }
  }

  const std::vector<Row>& rows() const { return rows_; }

  // The name of a value, empty for a number the enumeration does not name.
  std::string nameOf(Enum value) const {
    for (const Row& row : rows_) {
      if (row.first == value) return row.second;
    }
    return {};
  }

  // The value of a name, exact and case-sensitive.
  std::optional<Enum> valueOf(std::string_view name) const {
    for (const Row& row : rows_) {
      if (row.second == name) return row.first;
    }
    return std::nullopt;
  }

 private:
  static std::string_view trimmed(std::string_view text) {
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.front()))) {
      text.remove_prefix(1);
    }
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back()))) {
      text.remove_suffix(1);
    }
    return text;
  }

  // Every enumerator of these tables is written "NAME = number".
  void addRow(std::string_view enumerator) {
    const std::size_t equals = enumerator.find('=');
    const std::string number(trimmed(enumerator.substr(equals + 1)));
    rows_.emplace_back(static_cast<Enum>(std::strtol(number.c_str(), nullptr, 10)),
                       std::string(trimmed(enumerator.substr(0, equals))));
  }

  std::vector<Row> rows_;
};

}  // namespace halvor::kelo

// A scoped enumeration over int and its name table, found by argument lookup:
// namesOf(PresetMode{}).nameOf(PresetMode::HD) is "HD". Every enumerator needs its number.
#define KELO_NAMED_ENUM(Name, ...)                                         \
  enum class Name : int { __VA_ARGS__ };                                   \
  inline const ::halvor::kelo::NamedEnumTable<Name>& namesOf(Name) {       \
    static const ::halvor::kelo::NamedEnumTable<Name> table(#__VA_ARGS__); \
    return table;                                                          \
  }
