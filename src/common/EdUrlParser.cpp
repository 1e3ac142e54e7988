#include "kelo/common/EdUrlParser.h"

#include <cstddef>
#include <utility>

namespace halvor::kelo {

namespace {

// The thrown value by which toChar tells urlDecode of a bad escape.
constexpr int kBadHexDigit = 200;

bool isBlank(char c) { return c == ' ' || c == '\t'; }

bool isUnreserved(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '*' ||
         c == '-' || c == '.' || c == '_';
}

int hexDigitValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  throw kBadHexDigit;  // NOLINT(hicpp-exception-baseclass): urlDecode catches exactly this
}

bool isEmptyPair(const std::string& key, const std::string& value, bool strict) {
  return strict ? (key.empty() || value.empty()) : (key.empty() && value.empty());
}

}  // namespace

EdUrlParser::~EdUrlParser() = default;

EdUrlParser* EdUrlParser::parseUrl(std::string url) {
  auto* parser = new EdUrlParser();
  parser->mRawUrl = std::move(url);
  parser->parse();
  return parser;
}

void EdUrlParser::parse() {
  const std::string& url = mRawUrl;
  const size_t end = url.size();
  size_t at = 0;
  while (at < end && isBlank(url[at])) ++at;
  if (at == end) return;

  if (url[at] == '/') {
    // No scheme: the first segment is taken as the host name, so "/a/b" has the host "a".
    ++at;
  } else {
    const size_t colon = url.find(':', at);
    if (colon == std::string::npos) return;
    scheme = url.substr(at, colon - at);
    if (url.compare(colon, 3, "://") != 0) return;
    at = colon + 3;
  }

  const size_t hostEnd = url.find_first_of("/?:", at);
  hostName = url.substr(at, hostEnd == std::string::npos ? std::string::npos : hostEnd - at);
  if (hostEnd == std::string::npos) return;
  at = hostEnd;

  if (url[at] == ':') {
    const size_t portEnd = url.find_first_of("/?", at + 1);
    port = url.substr(at + 1, portEnd == std::string::npos ? std::string::npos : portEnd - at - 1);
    if (portEnd == std::string::npos) return;
    at = portEnd;
  }
  if (url[at] == '/') {
    const size_t pathEnd = url.find('?', at);
    path = url.substr(at, pathEnd == std::string::npos ? std::string::npos : pathEnd - at);
    if (pathEnd == std::string::npos) return;
    at = pathEnd;
  }
  if (url[at] == '?') {
    const size_t queryEnd = url.find('#', at + 1);
    query =
        url.substr(at + 1, queryEnd == std::string::npos ? std::string::npos : queryEnd - at - 1);
    if (queryEnd == std::string::npos) return;
    at = queryEnd;
  }
  if (url[at] == '#') fragment = url.substr(at + 1);
}

std::string EdUrlParser::urlDecode(std::string text) {
  std::string decoded;
  decoded.reserve(text.size());
  const size_t end = text.size();
  size_t at = 0;
  while (at < end) {
    const char c = text[at];
    if (c == '+') {
      decoded.push_back(' ');
      ++at;
    } else if (c == '%') {
      if (end - at < 3) return std::string();
      try {
        decoded.push_back(toChar(text.c_str() + at + 1));
      } catch (int) {
        return std::string();
      }
      at += 3;
    } else {
      decoded.push_back(c);
      ++at;
    }
  }
  return decoded;
}

std::string EdUrlParser::urlEncode(std::string text) {
  std::string encoded;
  encoded.reserve(text.size() * 3);
  for (const char c : text) {
    if (isUnreserved(c)) {
      encoded.push_back(c);
    } else if (c == ' ') {
      encoded.push_back('+');
    } else {
      char hex[2];
      toHex(hex, c);
      encoded.push_back('%');
      encoded.append(hex, 2);
    }
  }
  return encoded;
}

char EdUrlParser::toChar(const char* hex) {
  if (hex == nullptr) throw kBadHexDigit;  // NOLINT(hicpp-exception-baseclass)
  // The second digit is only read when the first is a digit, so a terminated text of one
  // character is never read past its end.
  const int high = hexDigitValue(hex[0]);
  const int low = hexDigitValue(hex[1]);
  return static_cast<char>((high << 4) | low);
}

void EdUrlParser::toHex(char* out, char c) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  const auto byte = static_cast<unsigned char>(c);
  out[0] = kDigits[byte >> 4];
  out[1] = kDigits[byte & 0x0F];
}

int EdUrlParser::parseKeyValue(std::string query, KeyValueCallback callback, void* obj,
                               bool strict) {
  const size_t end = query.size();
  size_t at = 0;
  while (at < end && isBlank(query[at])) ++at;
  if (at == end) return -1;

  int count = 0;
  std::string key;
  size_t start = at;
  for (; at <= end; ++at) {
    if (at < end && query[at] == '=') {
      // A second "=" in a pair makes the text between the two the key: "a=b=c" is b -> c.
      key = query.substr(start, at - start);
      start = at + 1;
    } else if (at == end || query[at] == '&') {
      std::string value = query.substr(start, at - start);
      start = at + 1;
      if (!isEmptyPair(key, value, strict)) {
        callback(obj, key, std::move(value));
        ++count;
      }
      key.clear();
    }
  }
  return count;
}

int EdUrlParser::parseKeyValueMap(std::unordered_map<std::string, std::string>* map,
                                  std::string query, bool strict) {
  return parseKeyValue(std::move(query), kvCallbackMap, map, strict);
}

int EdUrlParser::parseKeyValueList(std::vector<query_kv_t>* list, std::string query, bool strict) {
  return parseKeyValue(std::move(query), kvCallbackVec, list, strict);
}

int EdUrlParser::parsePath(std::vector<std::string>* folders, std::string path) {
  const size_t end = path.size();
  if (end < 2 || path[0] != '/') return 0;
  size_t start = 1;
  for (size_t at = 1; at < end; ++at) {
    if (path[at] == '/') {
      folders->push_back(path.substr(start, at - start));
      start = at + 1;
    }
  }
  if (start < end) folders->push_back(path.substr(start));
  return static_cast<int>(folders->size());
}

int EdUrlParser::kvCallbackMap(void* map, std::string key, std::string value) {
  auto* pairs = static_cast<std::unordered_map<std::string, std::string>*>(map);
  (*pairs)[std::move(key)] = std::move(value);
  return static_cast<int>(pairs->size());
}

int EdUrlParser::kvCallbackVec(void* list, std::string key, std::string value) {
  auto* pairs = static_cast<std::vector<query_kv_t>*>(list);
  pairs->push_back(query_kv_t{std::move(key), std::move(value)});
  return static_cast<int>(pairs->size());
}

}  // namespace halvor::kelo
