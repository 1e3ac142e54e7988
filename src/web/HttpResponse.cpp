#include "kelo/web/HttpResponse.h"

#include <algorithm>
#include <memory>

#include "FieldLookup.h"
#include "ThreadContext.h"

namespace halvor::kelo::web {

HttpResponsePtr HttpResponse::newHttpResponse() {
  auto response = std::make_shared<HttpResponse>();
  ThreadContext::applyCreationAdvices(response);
  return response;
}

std::string_view HttpResponse::contentTypeString() const {
  if (contentType_ == CT_CUSTOM) return customContentType_;
  return web::contentTypeString(contentType_);
}

void HttpResponse::addHeader(std::string name, std::string value) {
  // One field per name: an advice and a handler that set the same header must not send it twice
  // ("true, true" is not "true" to a browser).
  for (auto& field : headers_) {
    if (FieldLookup::equalsIgnoreCase(field.first, name)) {
      field.second = std::move(value);
      return;
    }
  }
  headers_.emplace_back(std::move(name), std::move(value));
}

const std::string& HttpResponse::getHeader(std::string_view name) const {
  return FieldLookup::find(headers_, name);
}

void HttpResponse::removeHeader(std::string_view name) {
  std::erase_if(headers_, [name](const auto& field) {
    return FieldLookup::equalsIgnoreCase(field.first, name);
  });
}

void HttpResponse::addCookie(std::string name, std::string value) {
  cookies_.emplace_back(std::move(name), std::move(value));
}

void HttpResponse::removeCookie(std::string_view name) {
  std::erase_if(cookies_, [name](const auto& cookie) { return cookie.first == name; });
}

const std::string& HttpResponse::getCookie(std::string_view name) const {
  return FieldLookup::findExact(cookies_, name);
}

void HttpResponse::reset() {
  status_ = k200OK;
  contentType_ = CT_NONE;
  closeConnection_ = false;
  creationAdviceApplied_ = false;
  customContentType_.clear();
  body_.clear();
  sharedBody_.reset();
  headers_.clear();
  cookies_.clear();
}

}  // namespace halvor::kelo::web
