#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace halvor::kelo::test {

// One HTTP response as received.
struct HttpReply {
  int status = 0;
  std::string reason;
  std::vector<std::pair<std::string, std::string>> headers;
  std::string body;

  // First header of that name (case-insensitive), "" when absent.
  std::string header(const std::string& name) const;
  // Every header of that name, in order ("Set-Cookie" lines).
  std::vector<std::string> headersNamed(const std::string& name) const;
  bool hasHeader(const std::string& name) const;
};

// A small synchronous HTTP/1.1 client over plain TCP or TLS (certificates are not verified),
// keep-alive by default. Every operation has a time limit and throws std::runtime_error when it
// passes, so that a test never hangs. Raw mode (sendRaw/readReply) lets a test send malformed or
// pipelined bytes.
class HttpClient {
 public:
  using Headers = std::vector<std::pair<std::string, std::string>>;

  HttpClient(std::string host, std::uint16_t port, bool tls = false);
  ~HttpClient();
  HttpClient(const HttpClient&) = delete;
  HttpClient& operator=(const HttpClient&) = delete;

  void setTimeout(std::chrono::milliseconds timeout);
  // Connects (and does the TLS handshake); called by the first request when needed.
  void connect();
  bool isConnected() const;

  // One request, then its response. A "Host" header is added unless given; a body gets a
  // Content-Length.
  HttpReply request(const std::string& method, const std::string& target,
                    const std::string& body = "", const Headers& headers = {});
  HttpReply get(const std::string& target, const Headers& headers = {});

  // Raw bytes as they are.
  void sendRaw(const std::string& bytes);
  // Reads one response (body by Content-Length or until close; none for HEAD when `head`).
  HttpReply readReply(bool head = false);
  // True when the server closes the connection (end of stream or reset) within `timeout`;
  // bytes that arrive before are dropped.
  bool waitForClose(std::chrono::milliseconds timeout);
  void close();

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace halvor::kelo::test
