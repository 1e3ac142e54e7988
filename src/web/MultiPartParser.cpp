#include "kelo/web/MultiPartParser.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>

#include "FieldLookup.h"

namespace halvor::kelo::web {
namespace {

std::string_view trim(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
  return text;
}

// The value of `attribute` in a header value such as `form-data; name="a"; filename="b"`.
// `found` tells an absent attribute from an empty one.
std::string attributeOf(std::string_view header, std::string_view attribute, bool& found) {
  found = false;
  std::size_t at = header.find(';');
  while (at != std::string_view::npos) {
    std::string_view rest = header.substr(at + 1);
    // Walk to the next ';' that is not inside quotes.
    std::size_t end = 0;
    bool quoted = false;
    for (; end < rest.size(); ++end) {
      if (rest[end] == '"') quoted = !quoted;
      if (rest[end] == ';' && !quoted) break;
    }
    std::string_view pair = trim(rest.substr(0, end));
    std::size_t equals = pair.find('=');
    if (equals != std::string_view::npos &&
        FieldLookup::equalsIgnoreCase(trim(pair.substr(0, equals)), attribute)) {
      std::string_view value = trim(pair.substr(equals + 1));
      if (value.size() >= 2 && value.front() == '"' && value.back() == '"') {
        value = value.substr(1, value.size() - 2);
      }
      found = true;
      return std::string(value);
    }
    at = end < rest.size() ? at + 1 + end : std::string_view::npos;
  }
  return {};
}

// A body kept in a temporary file is searched through its read-only mapping a window at a
// time, and the pages already searched are given back, so that the search of a large upload
// does not make the whole file resident in the process. The bytes stay in the file (and the
// page cache): a later look at them maps them in again.
constexpr std::size_t kWindow = 4 * 1024 * 1024;

void releasePages(std::string_view body, std::size_t end) {
  static const auto page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
  const auto first = reinterpret_cast<std::uintptr_t>(body.data());
  const std::uintptr_t from = (first + page - 1) / page * page;
  const std::uintptr_t to = (first + end) / page * page;
  if (to > from) ::madvise(reinterpret_cast<void*>(from), to - from, MADV_DONTNEED);
}

std::size_t findReleasing(std::string_view body, std::string_view what, std::size_t from,
                          bool mapped) {
  if (!mapped) return body.find(what, from);
  while (from < body.size()) {
    const std::size_t length = std::min(kWindow + what.size(), body.size() - from);
    const std::size_t found = body.substr(from, length).find(what);
    if (found != std::string_view::npos) return from + found;
    if (from + length >= body.size()) break;
    from += kWindow;
    releasePages(body, from);
  }
  return std::string_view::npos;
}

}  // namespace

const std::string& MultiPartParser::getParameter(std::string_view name) const {
  auto it = parameters_.find(std::string(name));
  return it == parameters_.end() ? FieldLookup::empty() : it->second;
}

int MultiPartParser::parse(const HttpRequestPtr& req) {
  parameters_.clear();
  files_.clear();
  if (!req) return -1;
  const std::string& contentType = req->getHeader("content-type");
  std::string_view mime = trim(std::string_view(contentType).substr(0, contentType.find(';')));
  if (!FieldLookup::equalsIgnoreCase(mime, "multipart/form-data")) return -1;
  bool found = false;
  std::string boundary = attributeOf(contentType, "boundary", found);
  if (!found || boundary.empty()) return -1;

  std::string_view body = req->body();
  const std::string delimiter = "--" + boundary;
  std::size_t at = body.find(delimiter);
  if (at == std::string_view::npos) return -1;
  at += delimiter.size();
  const std::string separator = "\r\n" + delimiter;
  while (true) {
    std::string_view rest = body.substr(at);
    if (rest.substr(0, 2) == "--") return 0;  // closing delimiter
    // Transport padding after a delimiter, then the line break.
    std::size_t lineEnd = rest.find("\r\n");
    if (lineEnd == std::string_view::npos || !trim(rest.substr(0, lineEnd)).empty()) return -1;
    at += lineEnd + 2;
    std::size_t next = findReleasing(body, separator, at, !req->bodyFilePath().empty());
    if (next == std::string_view::npos) return -1;
    if (parsePart(body.substr(at, next - at), req) != 0) return -1;
    at = next + separator.size();
  }
}

int MultiPartParser::parsePart(std::string_view part, const HttpRequestPtr& req) {
  std::size_t headerEnd = part.find("\r\n\r\n");
  std::string_view headers;
  std::string_view content;
  if (part.substr(0, 2) == "\r\n") {
    content = part.substr(2);  // a part without any header field
  } else {
    if (headerEnd == std::string_view::npos) return -1;
    headers = part.substr(0, headerEnd);
    content = part.substr(headerEnd + 4);
  }
  std::string disposition;
  std::string partType;
  while (!headers.empty()) {
    std::size_t end = headers.find("\r\n");
    std::string_view line = headers.substr(0, end);
    headers = end == std::string_view::npos ? std::string_view() : headers.substr(end + 2);
    std::size_t colon = line.find(':');
    if (colon == std::string_view::npos) return -1;
    std::string_view name = trim(line.substr(0, colon));
    std::string_view value = trim(line.substr(colon + 1));
    if (FieldLookup::equalsIgnoreCase(name, "content-disposition")) disposition = value;
    if (FieldLookup::equalsIgnoreCase(name, "content-type")) partType = value;
  }
  if (disposition.empty()) return -1;
  bool hasName = false;
  std::string itemName = attributeOf(disposition, "name", hasName);
  if (!hasName) return -1;
  bool hasFileName = false;
  std::string fileName = attributeOf(disposition, "filename", hasFileName);
  if (hasFileName) {
    files_.emplace_back(std::move(itemName), std::move(fileName), std::move(partType), content,
                        std::static_pointer_cast<const void>(req));
    if (!req->bodyFilePath().empty()) {
      // The content is a view into the mapped body file: the same bytes lie in the file.
      files_.back().setSourceFile(req->bodyFilePath(),
                                  static_cast<std::size_t>(content.data() - req->body().data()));
    }
  } else {
    parameters_[itemName] = std::string(content);
  }
  return 0;
}

}  // namespace halvor::kelo::web
