#include "SslHttpSession.h"

namespace halvor::kelo::web {

SslHttpSession::SslHttpSession(boost::asio::ip::tcp::socket&& socket,
                               std::shared_ptr<boost::asio::ssl::context> tls, ServerStatePtr state,
                               IoThreadPtr io, ConnectionLimiter::Slot slot, InetAddress peer,
                               InetAddress local)
    : HttpSession(std::move(state), std::move(io), std::move(slot), std::move(peer),
                  std::move(local)),
      tls_(std::move(tls)),
      stream_(std::move(socket), *tls_) {}

void SslHttpSession::run() {
  boost::system::error_code ignored;
  stream_.next_layer().set_option(boost::asio::ip::tcp::no_delay(true), ignored);
  beginTracking();
  // Idle until the handshake is done: a client that never finishes it is closed like an idle one.
  reading_ = true;
  stream_.async_handshake(
      boost::asio::ssl::stream_base::server,
      [self = shared_from_this()](boost::beast::error_code ec) { self->onHandshake(ec); });
}

void SslHttpSession::onHandshake(boost::beast::error_code ec) {
  reading_ = false;
  if (ec) {
    SessionErrors::fail(ec, "TLS handshake");
    return closeSocket();
  }
  doRead();
}

void SslHttpSession::closeSocket() {
  boost::system::error_code ignored;
  stream_.next_layer().close(ignored);
  slot_ = ConnectionLimiter::Slot();
}

void SslHttpSession::doEof() {
  // The TLS close_notify exchange; a peer that never answers is closed by the idle check.
  lingering_ = true;
  lastActivity_ = io_->ticks();
  stream_.async_shutdown([self = shared_from_this()](boost::beast::error_code ec) {
    if (ec) SessionErrors::fail(ec, "TLS shutdown");
    self->closeSocket();
  });
}

void SslHttpSession::upgradeToWebSocket(
    const WebSocketControllerPtr& controller,
    boost::beast::http::request<boost::beast::http::empty_body>&& upgrade,
    const HttpRequestPtr& request) {
  auto session = std::make_shared<WebSocketSession<Stream>>(
      std::move(stream_), state_, io_, std::move(slot_), peer_, local_, controller);
  session->start(std::move(upgrade), request);
}

}  // namespace halvor::kelo::web
