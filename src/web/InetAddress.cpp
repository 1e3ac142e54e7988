#include "kelo/web/InetAddress.h"

#include <boost/asio/ip/address.hpp>

namespace halvor::kelo::web {

InetAddress::InetAddress(const std::string& ip, std::uint16_t port) : ip_(ip), port_(port) {
  boost::system::error_code ec;
  auto address = boost::asio::ip::make_address(ip, ec);
  if (ec) return;
  if (address.is_v6()) {
    auto v6 = address.to_v6();
    if (v6.is_v4_mapped()) {
      // A dual-stack socket reports IPv4 peers in this form; show them as what they are.
      auto v4 = boost::asio::ip::make_address_v4(boost::asio::ip::v4_mapped, v6);
      ip_ = v4.to_string();
      loopback_ = v4.is_loopback();
      return;
    }
    v6_ = true;
    loopback_ = v6.is_loopback();
    ip_ = v6.to_string();
  } else {
    loopback_ = address.to_v4().is_loopback();
  }
}

std::string InetAddress::toIpPort() const {
  std::string text;
  if (v6_) {
    text = "[" + ip_ + "]";
  } else {
    text = ip_;
  }
  text += ':';
  text += std::to_string(port_);
  return text;
}

}  // namespace halvor::kelo::web
