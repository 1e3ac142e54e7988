#include "OpenApiOutline.h"

#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string_view>

namespace halvor::kelo::test {

namespace {

enum class Section { Other, Paths, WebSockets };

const std::set<std::string> kMethods = {"get",   "put",     "post", "delete",
                                        "patch", "options", "head", "trace"};
// The other fields of a path item that the document may use.
const std::set<std::string> kPathItemFields = {"summary", "description", "parameters"};
const std::set<std::string> kWebSocketFields = {"summary",     "description", "parameters",
                                                "x-handshake", "x-messages",  "x-close-codes"};

class LineError {
 public:
  LineError(const std::string& source, std::size_t number, std::string_view line)
      : prefix_(source + ":" + std::to_string(number) + ": "), line_(line) {}

  [[noreturn]] void raise(const std::string& what) const {
    throw std::runtime_error(prefix_ + what + ": " + line_);
  }

 private:
  std::string prefix_;
  std::string line_;
};

std::string_view trimRight(std::string_view text) {
  while (!text.empty() && (text.back() == ' ' || text.back() == '\r')) {
    text.remove_suffix(1);
  }
  return text;
}

// "key:" alone, the key plain or quoted; the key, or an error.
std::string keyAlone(std::string_view content, const LineError& error) {
  if (content.empty() || content.back() != ':') {
    error.raise("expected a key alone on its line, ending in ':'");
  }
  content.remove_suffix(1);
  if (content.size() >= 2 && (content.front() == '\'' || content.front() == '"') &&
      content.back() == content.front()) {
    return std::string(content.substr(1, content.size() - 2));
  }
  if (content.find_first_of("'\"#{}[], ") != std::string_view::npos) {
    error.raise("expected a plain or quoted key");
  }
  return std::string(content);
}

// The key of "key:" or "key: value".
std::string keyOf(std::string_view content, bool& hasValue, const LineError& error) {
  const std::size_t colon = content.find(':');
  if (colon == std::string_view::npos || colon == 0 ||
      (colon + 1 < content.size() && content[colon + 1] != ' ')) {
    error.raise("expected a key");
  }
  hasValue = colon + 1 < content.size();
  return std::string(content.substr(0, colon));
}

}  // namespace

OpenApiOutline OpenApiOutline::parse(const std::string& text, const std::string& source) {
  OpenApiOutline outline;
  Section section = Section::Other;
  bool sawPaths = false;
  std::string currentPath;
  std::istringstream lines(text);
  std::string rawLine;
  std::size_t number = 0;
  while (std::getline(lines, rawLine)) {
    ++number;
    const std::string_view line = trimRight(rawLine);
    const LineError error(source, number, line);
    const std::size_t indent = line.find_first_not_of(' ');
    if (indent == std::string_view::npos) {
      continue;
    }
    if (line[indent] == '\t') {
      error.raise("a tab in the indentation");
    }
    const std::string_view content = line.substr(indent);
    if (content.front() == '#') {
      continue;
    }

    if (indent == 0) {
      bool hasValue = false;
      const std::string key = keyOf(content, hasValue, error);
      section = key == "paths"          ? Section::Paths
                : key == "x-websockets" ? Section::WebSockets
                                        : Section::Other;
      if (section == Section::Paths) {
        if (sawPaths) {
          error.raise("a second paths section");
        }
        sawPaths = true;
      }
      if (section != Section::Other && hasValue) {
        error.raise("the section's keys must follow in block style, one per line");
      }
      currentPath.clear();
      continue;
    }
    if (section == Section::Other) {
      continue;
    }

    if (indent == 2) {
      currentPath = keyAlone(content, error);
      if (currentPath.empty() || currentPath.front() != '/') {
        error.raise("a path must start with '/'");
      }
      const bool added =
          section == Section::Paths
              ? outline.operations.emplace(currentPath, std::set<std::string>()).second
              : outline.webSocketPaths.insert(currentPath).second;
      if (!added) {
        error.raise("the path is given twice");
      }
    } else if (indent == 4) {
      if (currentPath.empty()) {
        error.raise("a key before the first path");
      }
      bool hasValue = false;
      const std::string key = keyOf(content, hasValue, error);
      if (section == Section::WebSockets) {
        if (kWebSocketFields.count(key) == 0) {
          error.raise("not a field of a WebSocket endpoint");
        }
      } else if (kMethods.count(key) != 0) {
        if (hasValue) {
          error.raise("an operation must follow in block style");
        }
        if (!outline.operations[currentPath].insert(key).second) {
          error.raise("the method is given twice for " + currentPath);
        }
      } else if (kPathItemFields.count(key) == 0) {
        error.raise("neither an HTTP method in lower case nor a field of a path");
      }
    } else if (indent < 4) {
      error.raise("indentation of two spaces per level expected");
    } else if (currentPath.empty()) {
      error.raise("nested text before the first path");
    }
    // Deeper lines belong to an operation or field of the current path: not read.
  }
  if (!sawPaths) {
    throw std::runtime_error(source + ": no line \"paths:\"");
  }
  return outline;
}

OpenApiOutline OpenApiOutline::readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    throw std::runtime_error("Cannot read " + path);
  }
  std::ostringstream text;
  text << file.rdbuf();
  return parse(text.str(), path);
}

}  // namespace halvor::kelo::test
