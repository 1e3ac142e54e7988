#pragma once

#include <string>
#include <unordered_map>
#include <vector>

namespace halvor::kelo {

// One key and value of a query string, still percent-coded.
struct query_kv_t {  // NOLINT(readability-identifier-naming): the name callers know it by
  std::string key;
  std::string val;
};

// Splits a URL and a query string, and does the percent coding. Stands alone: no host, no web
// layer. Handlers use parseKeyValueMap and urlDecode; the rest is kept as the class has it.
class EdUrlParser {
 public:
  // Receives each pair that parseKeyValue finds; returns the size of its container.
  using KeyValueCallback = int (*)(void* obj, std::string key, std::string value);

  virtual ~EdUrlParser();

  // A new parser, owned by the caller, with url parsed into its members.
  static EdUrlParser* parseUrl(std::string url);
  // Fills the members from mRawUrl.
  void parse();

  // "+" becomes a blank and "%XY" the byte XY. A "%" without two hexadecimal digits after it
  // makes the whole result empty, not partial.
  static std::string urlDecode(std::string text);
  // Letters, digits and "*-._" stay, a blank becomes "+", every other byte "%XY".
  static std::string urlEncode(std::string text);
  // The byte of two hexadecimal digits of either case; throws the int 200 on anything else.
  static char toChar(const char* hex);
  // Writes the two upper-case hexadecimal digits of c to out[0] and out[1].
  static void toHex(char* out, char c);

  // Splits "k=v&k=v" and hands each pair, undecoded, to callback. A pair counts when both key
  // and value are non-empty (strict) or at least one of them is. Returns the count, or -1 for a
  // query that is empty or blank.
  static int parseKeyValue(std::string query, KeyValueCallback callback, void* obj, bool strict);
  // parseKeyValue into a map: of a repeated key the last one wins.
  static int parseKeyValueMap(std::unordered_map<std::string, std::string>* map, std::string query,
                              bool strict = false);
  // parseKeyValue into a list: every pair, in order.
  static int parseKeyValueList(std::vector<query_kv_t>* list, std::string query,
                               bool strict = false);
  // Appends the segments of "/a/b" to folders; returns their number, 0 for a path that does not
  // start with "/" or is shorter than two characters.
  static int parsePath(std::vector<std::string>* folders, std::string path);

  // The callbacks of parseKeyValueMap and parseKeyValueList. Their traditional names begin with
  // two underscores, which C++ reserves for the implementation, hence these names.
  static int kvCallbackMap(void* map, std::string key, std::string value);
  static int kvCallbackVec(void* list, std::string key, std::string value);

  std::string mRawUrl;
  std::string scheme;
  std::string hostName;
  std::string port;
  std::string path;
  std::string query;
  std::string fragment;
};

}  // namespace halvor::kelo
