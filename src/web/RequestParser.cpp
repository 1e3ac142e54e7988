#include "RequestParser.h"

#include <fcntl.h>
#include <unistd.h>

#include <boost/beast/http/error.hpp>
#include <cstdio>
#include <vector>

#include "FieldLookup.h"
#include "PartSpool.h"
#include "UrlCodec.h"

namespace halvor::kelo::web {

namespace http = boost::beast::http;
using string_view = RequestParser::string_view;

namespace {

// OWS around a field value is not part of it.
string_view trimmed(string_view value) {
  while (!value.empty() && (value.front() == ' ' || value.front() == '\t')) value.remove_prefix(1);
  while (!value.empty() && (value.back() == ' ' || value.back() == '\t')) value.remove_suffix(1);
  return value;
}

}  // namespace

RequestParser::RequestParser(HttpRequest& request, Limits limits,
                             const std::string& temporaryDirectory)
    : request_(request), limits_(std::move(limits)), temporaryDirectory_(temporaryDirectory) {}

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
                                  error_code& ec) {
  // Only one framing is trusted: a single Transfer-Encoding of exactly "chunked", and never
  // together with Content-Length. Anything else leaves the end of the body in doubt, and a
  // proxy in front may see a different end than we do.
  if (name == http::field::transfer_encoding) {
    if (transferEncodingSeen_ || !FieldLookup::equalsIgnoreCase(trimmed(value), "chunked")) {
      ec = http::error::bad_transfer_encoding;
      return;
    }
    transferEncodingSeen_ = true;
  }
  if (name == http::field::content_length && transferEncodingSeen_) {
    ec = http::error::bad_transfer_encoding;
    return;
  }
  if (name == http::field::expect && FieldLookup::equalsIgnoreCase(value, "100-continue")) {
    expectsContinue_ = true;
  }
  request_.addHeader(std::string(nameText), std::string(value));
}

void RequestParser::on_header_impl(error_code&) {}

void RequestParser::on_body_init_impl(const boost::optional<std::uint64_t>& contentLength,
                                      error_code& ec) {
  if (startForm(contentLength)) {
    if (contentLength && *contentLength > limits_.maxDiskBody) ec = http::error::body_limit;
    return;
  }
  if (contentLength && *contentLength > limits_.maxMemoryBody &&
      (*contentLength > limits_.maxDiskBody || !openBodyFile())) {
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
  if (form_) {
    (void)form_->finish();  // a malformed body is the handler's to answer
    request_.setStreamedForm(std::move(form_));
    return;
  }
  if (bodyFile_ >= 0) {
    ::close(bodyFile_);
    bodyFile_ = -1;
    request_.setBodyFile(std::move(bodyFilePath_), bodyFileLength_, std::move(lease_));
    bodyFilePath_.clear();
  }
}

// In memory until the body passes the memory limit, then in the file (chunked bodies learn
// their size only as they come).
bool RequestParser::appendBody(string_view chunk) {
  if (form_) return appendForm(chunk);
  if (bodyFile_ < 0 && request_.bodyLength() + chunk.size() > limits_.maxMemoryBody) {
    if (!openBodyFile()) return false;
    std::string_view sofar = request_.body();
    if (!writeToFile(sofar.data(), sofar.size())) return false;
    request_.setBody(std::string());
  }
  if (bodyFile_ < 0) {
    request_.appendBody(chunk);
    return true;
  }
  return writeToFile(chunk.data(), chunk.size());
}

// A multipart body that would not stay in memory is streamed by part.
bool RequestParser::startForm(const boost::optional<std::uint64_t>& contentLength) {
  if (contentLength && *contentLength <= limits_.maxMemoryBody) return false;
  std::string boundary = MultiPartParser::boundaryOf(request_.getHeader("content-type"));
  if (boundary.empty()) return false;
  auto lease =
      limits_.diskBudget ? limits_.diskBudget->lease() : std::make_shared<DiskBudget>()->lease();
  form_ = std::make_shared<MultiPartParser>();
  form_->begin(std::move(boundary),
               std::make_unique<PartSpool>(uploadDirectory(), temporaryDirectory_, std::move(lease),
                                           limits_.maxDiskBody),
               static_cast<std::size_t>(limits_.maxMemoryBody));
  formLength_ = 0;
  return true;
}

// A malformed body is read to its end all the same (its parts so far are kept, the rest is
// ignored); a body beyond its limits is not.
bool RequestParser::appendForm(string_view chunk) {
  formLength_ += chunk.size();
  if (formLength_ > limits_.maxDiskBody) return false;
  return form_->feed(std::string_view(chunk.data(), chunk.size())) || !form_->overLimit();
}

// The first answer of the application's choosers; a chooser that throws has none.
std::string RequestParser::uploadDirectory() const {
  if (!limits_.uploadDirectories) return {};
  for (const auto& choose : *limits_.uploadDirectories) {
    try {
      std::string directory = choose(request_);
      if (!directory.empty()) return directory;
    } catch (...) {
    }
  }
  return {};
}

// Within this body's own limit and the budget of all bodies on disk, or not at all.
bool RequestParser::writeToFile(const char* data, std::size_t size) {
  if (size == 0) return true;
  if (bodyFileLength_ + size > limits_.maxDiskBody || !lease_->grow(size)) return false;
  std::size_t left = size;
  while (left > 0) {
    ssize_t written = ::write(bodyFile_, data, left);
    if (written <= 0) return false;
    data += written;
    left -= static_cast<std::size_t>(written);
  }
  bodyFileLength_ += size;
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
  lease_ =
      limits_.diskBudget ? limits_.diskBudget->lease() : std::make_shared<DiskBudget>()->lease();
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
  lease_.reset();
}

}  // namespace halvor::kelo::web
