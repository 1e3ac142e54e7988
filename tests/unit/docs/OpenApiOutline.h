#pragma once

#include <map>
#include <set>
#include <string>

namespace halvor::kelo::test {

// What the router test needs of the API document: the paths of its `paths` section with their
// operations, and the paths of its `x-websockets` section. Read line by line, without a YAML
// library, from a document in the fixed style told at the top of docs/api/openapi.yaml. A line
// that breaks that style at the levels read (a tab, an odd indent, a flow mapping, an unknown
// key, a path or method given twice) is an error rather than something to skip, so that a
// document this reader misunderstands cannot pass the comparison.
struct OpenApiOutline {
  // Path as written in the document -> its operations, in lower case ("get", "put", ...).
  std::map<std::string, std::set<std::string>> operations;
  std::set<std::string> webSocketPaths;

  // Throws std::runtime_error "<source>:<line>: <what is wrong>: <the line>".
  static OpenApiOutline parse(const std::string& text, const std::string& source);
  // The file's text through parse(); throws std::runtime_error when it cannot be read.
  static OpenApiOutline readFile(const std::string& path);
};

}  // namespace halvor::kelo::test
