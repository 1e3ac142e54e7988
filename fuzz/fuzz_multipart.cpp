// The web layer's multipart/form-data parser over a request made of the fuzzer's bytes. A first
// byte below 32 picks a boundary of that many following bytes; otherwise the boundary is fixed.
// The same body fed in pieces (of 1 to 13 bytes, by the input's length) must give the same
// result and the same parts as the whole body.
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
  const int whole = parser.parse(req);
  // The boundary as the parser reads it from the header (quotes, blanks and ';' taken off).
  const std::string parsedBoundary = MultiPartParser::boundaryOf(req->getHeader("content-type"));
  if (parsedBoundary.empty()) return 0;
  MultiPartParser pieces;
  pieces.begin(parsedBoundary);
  const std::size_t piece = 1 + input.size() % 13;
  for (std::size_t at = 0; at < input.size(); at += piece) {
    const std::string copy(input.substr(at, piece));  // each piece lives for its call only
    pieces.feed(copy);
  }
  if (pieces.finish() != whole || pieces.getParameters() != parser.getParameters() ||
      pieces.getFiles().size() != parser.getFiles().size()) {
    std::abort();
  }
  for (std::size_t i = 0; i < parser.getFiles().size(); ++i) {
    const HttpFile& a = parser.getFiles()[i];
    const HttpFile& b = pieces.getFiles()[i];
    if (a.getItemName() != b.getItemName() || a.getFileName() != b.getFileName() ||
        a.getContentType() != b.getContentType() || a.fileContent() != b.fileContent()) {
      std::abort();
    }
  }
  if (whole != 0) return 0;
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
