#include "support/Requests.h"

#include <utility>

namespace halvor::kelo::test {

web::HttpRequestPtr makeRequest(web::HttpMethod method, std::string path, std::string query,
                                std::string body) {
  web::HttpRequestPtr req = web::HttpRequest::newHttpRequest();
  req->setMethod(method);
  req->setPath(std::move(path));
  req->setQuery(std::move(query));
  req->setBody(std::move(body));
  req->setPeerAddr(web::InetAddress("127.0.0.1", 50000));
  return req;
}

web::HttpRequestPtr upgradeRequest(const std::string& query, const std::string& cookie,
                                   const std::string& peerIp, std::uint16_t peerPort) {
  web::HttpRequestPtr req = web::HttpRequest::newHttpRequest();
  req->setMethod(web::Get);
  req->setQuery(query);
  if (!cookie.empty()) {
    req->addHeader("Cookie", cookie);
  }
  req->setPeerAddr(web::InetAddress(peerIp, peerPort));
  req->setLocalAddr(web::InetAddress("127.0.0.1", 7000));
  return req;
}

}  // namespace halvor::kelo::test
