#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <memory>

#include "HttpSession.h"

namespace halvor::kelo::web {

// An HTTP connection over plain TCP.
class PlainHttpSession : public HttpSession<PlainHttpSession>,
                         public std::enable_shared_from_this<PlainHttpSession> {
 public:
  // Whether answers go over TLS (Secure cookies, Strict-Transport-Security).
  static constexpr bool kSecure = false;

  PlainHttpSession(boost::asio::ip::tcp::socket&& socket, ServerStatePtr state, IoThreadPtr io,
                   ConnectionLimiter::Slot slot, InetAddress peer, InetAddress local);

  // On the connection's I/O thread.
  void run();

  boost::asio::ip::tcp::socket& stream() { return socket_; }
  void closeSocket();
  void doEof();
  void upgradeToWebSocket(const WebSocketControllerPtr& controller,
                          boost::beast::http::request<boost::beast::http::empty_body>&& upgrade,
                          const HttpRequestPtr& request);

 private:
  boost::asio::ip::tcp::socket socket_;
};

}  // namespace halvor::kelo::web
