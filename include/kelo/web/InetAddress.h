#pragma once

#include <cstdint>
#include <string>

namespace halvor::kelo::web {

// An IP address and a port, as seen on a connection.
class InetAddress {
 public:
  InetAddress() = default;
  // `ip` in dotted (IPv4) or colon (IPv6) notation; an unparsable text gives an address whose
  // toIp() is the text as given and which is not loopback.
  InetAddress(const std::string& ip, std::uint16_t port);

  // "10.0.0.5", "::1".
  const std::string& toIp() const { return ip_; }
  // "10.0.0.5:41312", "[::1]:41312".
  std::string toIpPort() const;
  std::uint16_t toPort() const { return port_; }
  bool isIpV6() const { return v6_; }
  // 127.0.0.0/8, ::1 and ::ffff:127.x.x.x.
  bool isLoopbackIp() const { return loopback_; }

 private:
  std::string ip_;
  std::uint16_t port_ = 0;
  bool v6_ = false;
  bool loopback_ = false;
};

}  // namespace halvor::kelo::web
