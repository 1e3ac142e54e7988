#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "SharedFileCache.h"
#include "kelo/web/HttpResponse.h"

namespace halvor::kelo::web {

// Files under the document root, by request path. A path is served only when, after
// normalisation ("." and ".." resolved on the decoded path, symbolic links followed), it stays
// inside the root, names a regular file and has an admitted extension. Configuration, keys,
// certificates and logs are never served, whatever the admitted list says.
class StaticFiles {
 public:
  StaticFiles(const std::string& documentRoot, std::vector<std::string> fileTypes);

  // The file `decodedPath` stands for ("/" and directories mean their "index.html"), or ""
  // when it must not be served.
  std::string resolve(std::string_view decodedPath) const;
  // Fills status, content type and body from `file`; false when it cannot be read. The body is
  // shared with every other response that sends the same file at the same time.
  bool load(const std::string& file, HttpResponse& response);
  static bool isNeverServed(std::string_view extension);

 private:
  bool admitsExtension(std::string_view fileName) const;

  std::string root_;  // canonical, without trailing '/'; empty when the root does not exist
  std::vector<std::string> fileTypes_;
  SharedFileCache cache_;
};

}  // namespace halvor::kelo::web
