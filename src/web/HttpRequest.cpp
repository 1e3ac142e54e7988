#include "kelo/web/HttpRequest.h"

#include <cstdio>

#include "FieldLookup.h"
#include "MappedFile.h"
#include "UrlCodec.h"

namespace halvor::kelo::web {
namespace {

std::string_view trim(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
  return text;
}

}  // namespace

HttpRequestPtr HttpRequest::newHttpRequest() { return std::make_shared<HttpRequest>(); }

HttpRequest::HttpRequest() = default;

HttpRequest::~HttpRequest() { removeBodyFile(); }

std::string HttpRequest::getParameter(std::string_view name) const {
  return UrlCodec::queryParameter(query_, name);
}

const std::string& HttpRequest::getHeader(std::string_view name) const {
  return FieldLookup::find(headers_, name);
}

ContentType HttpRequest::contentType() const {
  const std::string& value = getHeader("content-type");
  if (value.empty()) return CT_NONE;
  std::string_view mime(value);
  mime = trim(mime.substr(0, mime.find(';')));
  for (int code = CT_APPLICATION_JSON; code < CT_CUSTOM; ++code) {
    std::string_view known = web::contentTypeString(static_cast<ContentType>(code));
    known = known.substr(0, known.find(';'));
    if (FieldLookup::equalsIgnoreCase(known, mime)) return static_cast<ContentType>(code);
  }
  return CT_CUSTOM;
}

const std::string& HttpRequest::getCookie(std::string_view name) const {
  return FieldLookup::findExact(cookies_, name);
}

std::string_view HttpRequest::body() const {
  if (mappedBody_) return mappedBody_->view();
  return body_;
}

void HttpRequest::addHeader(std::string name, std::string value) {
  if (FieldLookup::equalsIgnoreCase(name, "cookie")) parseCookieHeader(value);
  headers_.emplace_back(std::move(name), std::move(value));
}

void HttpRequest::addCookie(std::string name, std::string value) {
  cookies_.emplace_back(std::move(name), std::move(value));
}

void HttpRequest::setBody(std::string body) {
  removeBodyFile();
  body_ = std::move(body);
  bodyLength_ = body_.size();
}

void HttpRequest::appendBody(std::string_view chunk) {
  body_.append(chunk);
  bodyLength_ = body_.size();
}

void HttpRequest::setBodyFile(std::string path, std::size_t length,
                              std::shared_ptr<const void> lease) {
  removeBodyFile();
  bodyFileLease_ = std::move(lease);
  body_.clear();
  bodyFilePath_ = std::move(path);
  bodyLength_ = length;
  // Mapped now rather than on first use, so that body() is a plain read from any thread.
  mappedBody_ = std::make_unique<MappedFile>(bodyFilePath_);
}

void HttpRequest::reset() {
  method_ = Invalid;
  version_ = 11;
  path_.clear();
  query_.clear();
  headers_.clear();
  cookies_.clear();
  body_.clear();
  bodyLength_ = 0;
  removeBodyFile();
  streamedForm_.reset();
  peer_ = InetAddress();
  local_ = InetAddress();
  routingParameters_.clear();
}

// "a=1; b=2": pairs split at ';', name and value split at the first '='; a value in double
// quotes loses them.
void HttpRequest::parseCookieHeader(std::string_view value) {
  while (!value.empty()) {
    std::size_t end = value.find(';');
    std::string_view pair = trim(value.substr(0, end));
    value = end == std::string_view::npos ? std::string_view() : value.substr(end + 1);
    std::size_t equals = pair.find('=');
    if (equals == std::string_view::npos) continue;
    std::string_view name = trim(pair.substr(0, equals));
    std::string_view cookie = trim(pair.substr(equals + 1));
    if (cookie.size() >= 2 && cookie.front() == '"' && cookie.back() == '"') {
      cookie = cookie.substr(1, cookie.size() - 2);
    }
    if (!name.empty()) cookies_.emplace_back(std::string(name), std::string(cookie));
  }
}

void HttpRequest::removeBodyFile() {
  mappedBody_.reset();
  if (!bodyFilePath_.empty()) {
    std::remove(bodyFilePath_.c_str());
    bodyFilePath_.clear();
  }
  // Unmapped and removed: the bytes are free again.
  bodyFileLease_.reset();
}

}  // namespace halvor::kelo::web
