#include "UrlCodec.h"

namespace halvor::kelo::web {
namespace {

int hexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

}  // namespace

bool UrlCodec::decode(std::string_view text, bool plusAsSpace, std::string& out) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    char c = text[i];
    if (c == '%') {
      if (i + 2 >= text.size()) return false;
      int high = hexValue(text[i + 1]);
      int low = hexValue(text[i + 2]);
      if (high < 0 || low < 0) return false;
      out.push_back(static_cast<char>(high * 16 + low));
      i += 2;
    } else if (c == '+' && plusAsSpace) {
      out.push_back(' ');
    } else {
      out.push_back(c);
    }
  }
  return true;
}

std::string UrlCodec::queryParameter(std::string_view query, std::string_view name) {
  while (!query.empty()) {
    std::size_t end = query.find('&');
    std::string_view pair = query.substr(0, end);
    query = end == std::string_view::npos ? std::string_view() : query.substr(end + 1);
    std::size_t equals = pair.find('=');
    std::string key;
    if (!decode(pair.substr(0, equals), true, key) || key != name) continue;
    std::string value;
    if (equals != std::string_view::npos) decode(pair.substr(equals + 1), true, value);
    return value;
  }
  return {};
}

}  // namespace halvor::kelo::web
