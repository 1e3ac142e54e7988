#include "support/MiniHttpClient.h"

#include <chrono>

#include "support/HttpClient.h"

namespace halvor::kelo::test {

bool MiniResponse::hasHeader(const std::string& name) const {
  HttpReply reply;
  reply.headers = headers;
  return reply.hasHeader(name);
}

std::string MiniResponse::header(const std::string& name) const {
  HttpReply reply;
  reply.headers = headers;
  return reply.header(name);
}

std::vector<std::string> MiniResponse::setCookies() const {
  HttpReply reply;
  reply.headers = headers;
  return reply.headersNamed("Set-Cookie");
}

MiniHttpClient::MiniHttpClient(std::uint16_t p, bool t) : port(p), tls(t) {}

MiniHttpClient::~MiniHttpClient() = default;

MiniResponse MiniHttpClient::request(
    const std::string& method, const std::string& target,
    const std::vector<std::pair<std::string, std::string>>& headers, const std::string& body) {
  if (!client) {
    client = std::make_unique<HttpClient>("127.0.0.1", port, tls);
  }
  HttpReply reply = client->request(method, target, body, headers);
  MiniResponse answer;
  answer.status = reply.status;
  answer.headers = std::move(reply.headers);
  answer.body = std::move(reply.body);
  if (answer.header("Connection") == "close") {
    answer.closedByServer = client->waitForClose(std::chrono::seconds(5));
    client.reset();
  }
  return answer;
}

MiniResponse MiniHttpClient::once(std::uint16_t port, bool tls, const std::string& method,
                                  const std::string& target,
                                  const std::vector<std::pair<std::string, std::string>>& headers,
                                  const std::string& body) {
  MiniHttpClient client(port, tls);
  return client.request(method, target, headers, body);
}

}  // namespace halvor::kelo::test
