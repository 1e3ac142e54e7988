#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kelo/web/HttpTypes.h"
#include "kelo/web/InetAddress.h"

namespace halvor::kelo::web {

class MappedFile;
class MultiPartParser;

// One HTTP request. The server fills it; handlers read it, from any thread, for as long as they
// hold the pointer. Tests and fakes build one with newHttpRequest() and the setters.
class HttpRequest {
 public:
  using Fields = std::vector<std::pair<std::string, std::string>>;

  static HttpRequestPtr newHttpRequest();

  HttpRequest();
  ~HttpRequest();
  HttpRequest(const HttpRequest&) = delete;
  HttpRequest& operator=(const HttpRequest&) = delete;

  HttpMethod method() const { return method_; }
  // The method as a text ("GET").
  std::string_view methodString() const { return toString(method_); }
  // Percent-decoded path, without the query ("/1/api/login").
  const std::string& path() const { return path_; }
  // The query string as received, without "?" and still percent-encoded; "" when none.
  const std::string& query() const { return query_; }
  // Value of a query parameter, percent-decoded ('+' as blank); "" when absent.
  std::string getParameter(std::string_view name) const;
  // 10 for HTTP/1.0, 11 for HTTP/1.1.
  unsigned version() const { return version_; }

  // Case-insensitive; "" when absent. With several fields of one name, the first.
  const std::string& getHeader(std::string_view name) const;
  // All header fields in arrival order, names as received.
  const Fields& headers() const { return headers_; }
  // The Content-Type header ("" when absent) and its code (CT_NONE when absent, CT_CUSTOM when
  // not one of the known ones).
  const std::string& contentTypeString() const { return getHeader("content-type"); }
  ContentType contentType() const;

  // From the Cookie header(s); "" when absent.
  const std::string& getCookie(std::string_view name) const;
  const Fields& cookies() const { return cookies_; }

  // The whole body. A body above client_max_memory_body_size lives in a temporary file that is
  // mapped into memory on the first call; the view stays valid while the request lives.
  std::string_view body() const;
  std::size_t bodyLength() const { return bodyLength_; }
  // Path of the temporary file that holds the body, "" when the body is in memory. The file is
  // removed when the request is destroyed or reused.
  const std::string& bodyFilePath() const { return bodyFilePath_; }
  // A multipart/form-data body above client_max_memory_body_size is not kept whole: the server
  // parses it as it arrives, fields into memory and each file part into a file of its own, and
  // the parts are found here (MultiPartParser::parse gives them). body() is then empty.
  const std::shared_ptr<const MultiPartParser>& streamedForm() const { return streamedForm_; }

  const InetAddress& peerAddr() const { return peer_; }
  const InetAddress& localAddr() const { return local_; }

  // Values of the route's "{name}" segments, in order of the pattern.
  const std::vector<std::string>& routingParameters() const { return routingParameters_; }

  // Builders, used by the server and by tests.
  void setMethod(HttpMethod method) { method_ = method; }
  void setPath(std::string path) { path_ = std::move(path); }
  void setQuery(std::string query) { query_ = std::move(query); }
  void setVersion(unsigned version) { version_ = version; }
  // Adds a header field; a "Cookie" field is also parsed into cookies().
  void addHeader(std::string name, std::string value);
  void addCookie(std::string name, std::string value);
  void setBody(std::string body);
  void appendBody(std::string_view chunk);
  // Hands the body over to a file that the request owns from now on (removed with it).
  // `lease`, when given, is released once the file is gone (the server's disk budget).
  void setBodyFile(std::string path, std::size_t length,
                   std::shared_ptr<const void> lease = nullptr);
  void setStreamedForm(std::shared_ptr<const MultiPartParser> form) {
    streamedForm_ = std::move(form);
  }
  void setPeerAddr(InetAddress addr) { peer_ = std::move(addr); }
  void setLocalAddr(InetAddress addr) { local_ = std::move(addr); }
  std::vector<std::string>& routingParameters() { return routingParameters_; }

  // Back to an empty request, keeping allocated capacity; removes a body file.
  void reset();

 private:
  void parseCookieHeader(std::string_view value);
  void removeBodyFile();

  HttpMethod method_ = Invalid;
  unsigned version_ = 11;
  std::string path_;
  std::string query_;
  Fields headers_;
  Fields cookies_;
  std::string body_;
  std::size_t bodyLength_ = 0;
  std::string bodyFilePath_;
  mutable std::unique_ptr<MappedFile> mappedBody_;
  std::shared_ptr<const void> bodyFileLease_;
  std::shared_ptr<const MultiPartParser> streamedForm_;
  InetAddress peer_;
  InetAddress local_;
  std::vector<std::string> routingParameters_;
};

}  // namespace halvor::kelo::web
