#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "support/HttpClient.h"

namespace halvor::kelo::test {

// A reply and whether the server closed the connection after it.
struct KeloAnswer : HttpReply {
  bool closedByServer = false;
  std::vector<std::string> setCookies() const { return headersNamed("Set-Cookie"); }
};

// One request on a connection of its own to 127.0.0.1.
inline KeloAnswer callOnce(std::uint16_t port, bool tls, const std::string& method,
                           const std::string& target, const HttpClient::Headers& headers = {},
                           const std::string& body = "") {
  HttpClient client("127.0.0.1", port, tls);
  KeloAnswer answer;
  static_cast<HttpReply&>(answer) = client.request(method, target, body, headers);
  if (answer.header("Connection") == "close") {
    answer.closedByServer = client.waitForClose(std::chrono::seconds(5));
  }
  return answer;
}

}  // namespace halvor::kelo::test
