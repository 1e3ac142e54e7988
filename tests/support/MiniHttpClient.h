#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace halvor::kelo::test {

class HttpClient;

// One answer as the client saw it. Header names are compared without regard to case.
struct MiniResponse {
  int status = 0;
  std::vector<std::pair<std::string, std::string>> headers;
  std::string body;
  // The server said "Connection: close" and then closed its end.
  bool closedByServer = false;

  bool hasHeader(const std::string& name) const;
  // The first field of that name, "" when absent.
  std::string header(const std::string& name) const;
  // Every "Set-Cookie" field.
  std::vector<std::string> setCookies() const;
};

// HttpClient (tests/support/HttpClient.h) to 127.0.0.1 in the shape the plug-in's tests use:
// headers before the body, and the server's closing of the connection observed.
class MiniHttpClient {
 public:
  MiniHttpClient(std::uint16_t port, bool tls);
  ~MiniHttpClient();
  MiniHttpClient(const MiniHttpClient&) = delete;
  MiniHttpClient& operator=(const MiniHttpClient&) = delete;

  // Reconnects first when the previous answer closed the connection.
  MiniResponse request(const std::string& method, const std::string& target,
                       const std::vector<std::pair<std::string, std::string>>& headers = {},
                       const std::string& body = "");

  // One request on a connection of its own.
  static MiniResponse once(std::uint16_t port, bool tls, const std::string& method,
                           const std::string& target,
                           const std::vector<std::pair<std::string, std::string>>& headers = {},
                           const std::string& body = "");

 private:
  std::uint16_t port;
  bool tls;
  std::unique_ptr<HttpClient> client;
};

}  // namespace halvor::kelo::test
