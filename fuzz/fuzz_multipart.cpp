// The web layer's multipart/form-data parser over a request made of the fuzzer's bytes. A first
// byte below 32 picks a boundary of that many following bytes; otherwise the boundary is fixed.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "kelo/web/HttpFile.h"
#include "kelo/web/HttpRequest.h"
#include "kelo/web/MultiPartParser.h"

using namespace halvor::kelo::web;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string_view input(reinterpret_cast<const char*>(data), size);
  std::string boundary = "kelo-fuzz-boundary";
  if (!input.empty() && static_cast<unsigned char>(input[0]) < 32) {
    const std::size_t length = std::min<std::size_t>(input[0], input.size() - 1);
    boundary.assign(input.substr(1, length));
    input.remove_prefix(1 + length);
  }
  HttpRequestPtr req = HttpRequest::newHttpRequest();
  req->setMethod(Post);
  req->addHeader("Content-Type", "multipart/form-data; boundary=" + boundary);
  req->setBody(std::string(input));
  MultiPartParser parser;
  if (parser.parse(req) != 0) return 0;
  const std::string_view body = req->body();
  for (const HttpFile& file : parser.getFiles()) {
    const std::string_view content = file.fileContent();
    // A file's content lies inside the body, and a name called safe cannot leave a directory.
    if (!content.empty() && (content.data() < body.data() ||
                             content.data() + content.size() > body.data() + body.size())) {
      std::abort();
    }
    const std::string& name = file.getFileName();
    if (HttpFile::isSafeFileName(name) &&
        (name.empty() || name.find_first_of(std::string_view("/\\\0", 3)) != std::string::npos ||
         name.find("..") != std::string::npos)) {
      std::abort();
    }
  }
  return 0;
}
