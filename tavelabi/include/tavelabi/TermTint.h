#pragma once

#include <string>

namespace halvor {

// Terminal colour sequences for log lines. Whether colour is used is one process-wide setting.
class TermTint {
 public:
  static bool isUsingColor();
  static void useColor(bool on);

  // "\033[0;<code>m" and "\033[1;<code>m"; empty texts while colour is off. Code 0 resets.
  static std::string color(int code);
  static std::string bright_color(int code);

  static std::string brightRed(const std::string& text);
  static std::string brightYellow(const std::string& text);
};

// A title form for notable log lines.
class TitleTheme {
 public:
  static std::string request_title(const std::string& text);
};

}  // namespace halvor
