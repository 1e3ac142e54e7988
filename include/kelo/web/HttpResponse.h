#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kelo/web/HttpTypes.h"

namespace halvor::kelo::web {

// One HTTP response. Made by a handler with newHttpResponse() and handed to its callback.
class HttpResponse {
 public:
  using Fields = std::vector<std::pair<std::string, std::string>>;

  // A 200 response without body. On an I/O thread of a running application, the response
  // creation advices of that application run on it here; responses made elsewhere get them
  // from the server just before they are sent. Either way, exactly once.
  static HttpResponsePtr newHttpResponse();

  HttpResponse() = default;

  // Any three-digit code; 440 is sent as "440".
  void setStatusCode(int code) { status_ = code; }
  HttpStatusCode statusCode() const { return static_cast<HttpStatusCode>(status_); }

  void setContentTypeCode(ContentType type) {
    contentType_ = type;
    customContentType_.clear();
  }
  // A Content-Type outside the codes; contentType() becomes CT_CUSTOM.
  void setContentTypeString(std::string value) {
    contentType_ = CT_CUSTOM;
    customContentType_ = std::move(value);
  }
  ContentType contentType() const { return contentType_; }
  // The Content-Type header value that will be sent ("" for none).
  std::string_view contentTypeString() const;

  // A body of the response's own; replaces a shared body.
  void setBody(std::string body) {
    body_ = std::move(body);
    sharedBody_.reset();
  }
  // The body set with setBody ("" while a shared body is set).
  const std::string& body() const { return body_; }
  std::string& body() { return body_; }
  // A read-only body that many responses share (a static file): no copy per response. The
  // text must not change while any response holds it.
  void setSharedBody(std::shared_ptr<const std::string> body) {
    body_.clear();
    sharedBody_ = std::move(body);
  }
  // What is sent: the shared body when there is one, otherwise body().
  std::string_view bodyView() const { return sharedBody_ ? *sharedBody_ : std::string_view(body_); }

  // Adds the field, or replaces the value of a field of that name (names are matched
  // case-insensitively, also by getHeader and removeHeader).
  void addHeader(std::string name, std::string value);
  const std::string& getHeader(std::string_view name) const;
  void removeHeader(std::string_view name);
  const Fields& headers() const { return headers_; }

  // Sent as "Set-Cookie: name=value; HttpOnly", value as given.
  void addCookie(std::string name, std::string value);
  // Removes every cookie of that name added to this response.
  void removeCookie(std::string_view name);
  const std::string& getCookie(std::string_view name) const;
  const Fields& cookies() const { return cookies_; }

  // "Connection: close", and the server closes the connection after this response.
  void setCloseConnection(bool close) { closeConnection_ = close; }
  bool ifCloseConnection() const { return closeConnection_; }

  // Set once the response creation advices have run on this response.
  bool creationAdviceApplied() const { return creationAdviceApplied_; }
  void setCreationAdviceApplied() { creationAdviceApplied_ = true; }

  // Back to a fresh 200 response, keeping allocated capacity.
  void reset();

 private:
  int status_ = k200OK;
  ContentType contentType_ = CT_NONE;
  bool closeConnection_ = false;
  bool creationAdviceApplied_ = false;
  std::string customContentType_;
  std::string body_;
  std::shared_ptr<const std::string> sharedBody_;
  Fields headers_;
  Fields cookies_;
};

}  // namespace halvor::kelo::web
