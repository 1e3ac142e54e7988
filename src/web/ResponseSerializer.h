#pragma once

#include <string>
#include <string_view>

#include "kelo/web/HttpResponse.h"

namespace halvor::kelo::web {

// Status line and header block of a response, written into a buffer the connection reuses.
class ResponseSerializer {
 public:
  struct Options {
    bool close = false;            // "Connection: close"
    bool keepAliveHeader = false;  // "Connection: keep-alive" (HTTP/1.0 clients)
    bool serverHeader = false;
    // Appended to every Set-Cookie after "; HttpOnly" ("; SameSite=Lax; Secure" or "").
    std::string_view cookieAttributes;
  };
  // Replaces the content of `out`. Content-Length is always written (the body's size, also
  // for HEAD); header fields that the server owns (Content-Length, Transfer-Encoding,
  // Connection, Date) are not taken from the response's own list.
  static void writeHead(const HttpResponse& response, const Options& options, std::string& out);
  // Whether a response of this status carries a body at all (not 1xx, 204, 304).
  static bool statusHasBody(int status);
  // "Date: Sat, 21 Nov 2026 19:33:36 GMT\r\n", formatted at most once a second per thread.
  static const std::string& dateLine();
};

}  // namespace halvor::kelo::web
