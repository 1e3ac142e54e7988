#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/beast/ssl/ssl_stream.hpp>
#include <memory>

#include "HttpSession.h"

namespace halvor::kelo::web {

// An HTTP connection over TLS.
class SslHttpSession : public HttpSession<SslHttpSession>,
                       public std::enable_shared_from_this<SslHttpSession> {
 public:
  // Whether answers go over TLS (Secure cookies, Strict-Transport-Security).
  static constexpr bool kSecure = true;

  using Stream = boost::beast::ssl_stream<boost::asio::ip::tcp::socket>;

  SslHttpSession(boost::asio::ip::tcp::socket&& socket,
                 std::shared_ptr<boost::asio::ssl::context> tls, ServerStatePtr state,
                 IoThreadPtr io, ConnectionLimiter::Slot slot, InetAddress peer, InetAddress local);

  // On the connection's I/O thread: the handshake, then requests.
  void run();

  Stream& stream() { return stream_; }
  void closeSocket();
  void doEof();
  void upgradeToWebSocket(const WebSocketControllerPtr& controller,
                          boost::beast::http::request<boost::beast::http::empty_body>&& upgrade,
                          const HttpRequestPtr& request);

 private:
  void onHandshake(boost::beast::error_code ec);

  // Declared first: the stream refers to it and must go before it.
  std::shared_ptr<boost::asio::ssl::context> tls_;
  Stream stream_;
};

}  // namespace halvor::kelo::web
