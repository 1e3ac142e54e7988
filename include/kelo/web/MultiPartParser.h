#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "kelo/web/HttpFile.h"
#include "kelo/web/HttpRequest.h"

namespace halvor::kelo::web {

// Splits a multipart/form-data body into form fields and files.
class MultiPartParser {
 public:
  // 0 on success; -1 when the request is not multipart/form-data, has no boundary, or the body
  // is malformed (no closing boundary, a part without Content-Disposition or name, ...). Works
  // on bodies in memory and on bodies in a temporary file.
  int parse(const HttpRequestPtr& req);

  // Fields without a file name, by field name (the last one wins for repeated names).
  const std::map<std::string, std::string>& getParameters() const { return parameters_; }
  // "" when absent.
  const std::string& getParameter(std::string_view name) const;
  // Parts with a filename attribute, in body order, empty files included.
  const std::vector<HttpFile>& getFiles() const { return files_; }

 private:
  int parsePart(std::string_view part, const HttpRequestPtr& req);

  std::map<std::string, std::string> parameters_;
  std::vector<HttpFile> files_;
};

}  // namespace halvor::kelo::web
