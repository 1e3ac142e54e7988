#include "tavelabi/TermTint.h"

#include <atomic>

namespace halvor {

namespace {

// Off until a program turns it on: log files stay plain unless asked otherwise.
std::atomic<bool> usingColor{false};

constexpr int kReset = 0;
constexpr int kRed = 31;
constexpr int kYellow = 33;
constexpr int kCyan = 36;

}  // namespace

bool TermTint::isUsingColor() { return usingColor.load(); }

void TermTint::useColor(bool on) { usingColor.store(on); }

std::string TermTint::color(int code) {
  if (!isUsingColor()) return {};
  return "\033[0;" + std::to_string(code) + "m";
}

std::string TermTint::bright_color(int code) {
  if (!isUsingColor()) return {};
  return "\033[1;" + std::to_string(code) + "m";
}

std::string TermTint::brightRed(const std::string& text) {
  return bright_color(kRed) + text + color(kReset);
}

std::string TermTint::brightYellow(const std::string& text) {
  return bright_color(kYellow) + text + color(kReset);
}

std::string TitleTheme::request_title(const std::string& text) {
  return TermTint::bright_color(kCyan) + "===== " + text + " =====" + TermTint::color(kReset);
}

}  // namespace halvor
