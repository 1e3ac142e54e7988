#pragma once

#include <string>
#include <string_view>

namespace halvor::tavelabi {

// Globs over resource paths. Plain characters match themselves, "*" matches any run of
// characters within one path segment (no "/"), "**" matches any run of characters across
// segments. Every pattern matches its own text.
class GlobMatcher {
 public:
  explicit GlobMatcher(std::string pattern);

  bool match(const std::string& text) const;
  const std::string& getPattern() const { return pattern_; }

  static bool globMatch(const char* pattern, const char* text);

 private:
  static bool matches(std::string_view pattern, std::string_view text);

  std::string pattern_;
};

}  // namespace halvor::tavelabi
