// Any text as a URL, a query string and a percent-coded text. Properties: both splitters find
// the same pairs, every pair reaches the list, and decoding undoes encoding.
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "kelo/common/EdUrlParser.h"

using halvor::kelo::EdUrlParser;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const std::unique_ptr<EdUrlParser> url(EdUrlParser::parseUrl(text));
  std::vector<std::string> folders;
  if (EdUrlParser::parsePath(&folders, url->path) != static_cast<int>(folders.size())) abort();

  for (const bool strict : {true, false}) {
    std::unordered_map<std::string, std::string> map;
    std::vector<halvor::kelo::query_kv_t> list;
    const int inMap = EdUrlParser::parseKeyValueMap(&map, text, strict);
    const int inList = EdUrlParser::parseKeyValueList(&list, text, strict);
    if (inMap != inList || (inList >= 0 && static_cast<size_t>(inList) != list.size())) abort();
    if (map.size() > list.size()) abort();
  }

  (void)EdUrlParser::urlDecode(text);
  if (EdUrlParser::urlDecode(EdUrlParser::urlEncode(text)) != text) abort();
  return 0;
}
