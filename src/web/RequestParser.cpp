#include "RequestParser.h"

#include <fcntl.h>
#include <unistd.h>

#include <boost/beast/http/error.hpp>
#include <cstdio>
#include <vector>

#include "FieldLookup.h"
#include "UrlCodec.h"

namespace halvor::kelo::web {

namespace http = boost::beast::http;

RequestParser::RequestParser(HttpRequest& request, std::uint64_t maxMemoryBody,
                             const std::string& temporaryDirectory)
    : request_(request), maxMemoryBody_(maxMemoryBody), temporaryDirectory_(temporaryDirectory) {}

RequestParser::~RequestParser() { discardBodyFile(); }

void RequestParser::on_request_impl(http::verb, string_view methodText, string_view target,
                                    int version, error_code& ec) {
  request_.setMethod(parseHttpMethod(methodText));
  request_.setVersion(static_cast<unsigned>(version));
  // Absolute form ("http://host/path") is reduced to its path.
  if (!target.empty() && target.front() != '/' && target != "*") {
    std::size_t scheme = target.find("://");
    if (scheme == string_view::npos) {
      ec = http::error::bad_target;
      return;
    }
    std::size_t pathStart = target.find('/', scheme + 3);
    target = pathStart == string_view::npos ? string_view("/") : target.substr(pathStart);
  }
  std::size_t question = target.find('?');
  string_view rawPath = target.substr(0, question);
  if (question != string_view::npos) {
    std::string query(target.substr(question + 1));
    request_.setQuery(std::move(query));
  }
  std::string path;
  path.reserve(rawPath.size());
  if (!UrlCodec::decode(rawPath, false, path) || path.find('\0') != std::string::npos) {
    ec = http::error::bad_target;
    return;
  }
  request_.setPath(std::move(path));
}

void RequestParser::on_response_impl(int, string_view, int, error_code& ec) {
  ec = http::error::bad_method;
}

void RequestParser::on_field_impl(http::field name, string_view nameText, string_view value,
                                  error_code&) {
  if (name == http::field::expect && FieldLookup::equalsIgnoreCase(value, "100-continue")) {
    expectsContinue_ = true;
  }
  request_.addHeader(std::string(nameText), std::string(value));
}

void RequestParser::on_header_impl(error_code&) {}

void RequestParser::on_body_init_impl(const boost::optional<std::uint64_t>& contentLength,
                                      error_code& ec) {
  if (contentLength && *contentLength > maxMemoryBody_ && !openBodyFile()) {
    ec = http::error::body_limit;
  }
}

std::size_t RequestParser::on_body_impl(string_view body, error_code& ec) {
  if (!appendBody(body)) ec = http::error::body_limit;
  return body.size();
}

void RequestParser::on_chunk_header_impl(std::uint64_t, string_view, error_code&) {}

std::size_t RequestParser::on_chunk_body_impl(std::uint64_t, string_view body, error_code& ec) {
  if (!appendBody(body)) ec = http::error::body_limit;
  return body.size();
}

void RequestParser::on_finish_impl(error_code&) {
  if (bodyFile_ >= 0) {
    ::close(bodyFile_);
    bodyFile_ = -1;
    request_.setBodyFile(std::move(bodyFilePath_), bodyFileLength_);
    bodyFilePath_.clear();
  }
}

// In memory until the body passes the memory limit, then in the file (chunked bodies learn
// their size only as they come).
bool RequestParser::appendBody(string_view chunk) {
  if (bodyFile_ < 0 && request_.bodyLength() + chunk.size() > maxMemoryBody_) {
    if (!openBodyFile()) return false;
    std::string_view sofar = request_.body();
    if (!sofar.empty() &&
        ::write(bodyFile_, sofar.data(), sofar.size()) != static_cast<ssize_t>(sofar.size())) {
      return false;
    }
    bodyFileLength_ = sofar.size();
    request_.setBody(std::string());
  }
  if (bodyFile_ < 0) {
    request_.appendBody(chunk);
    return true;
  }
  const char* data = chunk.data();
  std::size_t left = chunk.size();
  while (left > 0) {
    ssize_t written = ::write(bodyFile_, data, left);
    if (written <= 0) return false;
    data += written;
    left -= static_cast<std::size_t>(written);
  }
  bodyFileLength_ += chunk.size();
  return true;
}

bool RequestParser::openBodyFile() {
  if (bodyFile_ >= 0) return true;
  std::string pattern = temporaryDirectory_ + "/kelo-body-XXXXXX";
  std::vector<char> name(pattern.begin(), pattern.end());
  name.push_back('\0');
  bodyFile_ = ::mkostemp(name.data(), O_CLOEXEC);
  if (bodyFile_ < 0) return false;
  bodyFilePath_ = name.data();
  bodyFileLength_ = 0;
  return true;
}

void RequestParser::discardBodyFile() {
  if (bodyFile_ >= 0) {
    ::close(bodyFile_);
    bodyFile_ = -1;
  }
  if (!bodyFilePath_.empty()) {
    std::remove(bodyFilePath_.c_str());
    bodyFilePath_.clear();
  }
}

}  // namespace halvor::kelo::web
