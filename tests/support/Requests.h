#pragma once

#include <cstdint>
#include <string>

#include "kelo/web/HttpRequest.h"

namespace halvor::kelo::test {

// A request as the server would hand it to a handler, from a loopback peer.
web::HttpRequestPtr makeRequest(web::HttpMethod method, std::string path, std::string query,
                                std::string body = {});

// A request as the upgrade of a real WebSocket client would carry it.
web::HttpRequestPtr upgradeRequest(const std::string& query = "", const std::string& cookie = "",
                                   const std::string& peerIp = "127.0.0.1",
                                   std::uint16_t peerPort = 40001);

}  // namespace halvor::kelo::test
