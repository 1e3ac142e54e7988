#include "PlainHttpSession.h"

namespace halvor::kelo::web {

PlainHttpSession::PlainHttpSession(boost::asio::ip::tcp::socket&& socket, ServerStatePtr state,
                                   IoThreadPtr io, ConnectionLimiter::Slot slot, InetAddress peer,
                                   InetAddress local)
    : HttpSession(std::move(state), std::move(io), std::move(slot), std::move(peer),
                  std::move(local)),
      socket_(std::move(socket)) {}

void PlainHttpSession::run() {
  boost::system::error_code ignored;
  socket_.set_option(boost::asio::ip::tcp::no_delay(true), ignored);
  beginTracking();
  doRead();
}

void PlainHttpSession::closeSocket() {
  boost::system::error_code ignored;
  socket_.close(ignored);
  slot_ = ConnectionLimiter::Slot();
}

void PlainHttpSession::doEof() {
  boost::system::error_code ec;
  socket_.shutdown(boost::asio::ip::tcp::socket::shutdown_send, ec);
  if (ec) return closeSocket();
  linger();
}

void PlainHttpSession::upgradeToWebSocket(
    const WebSocketControllerPtr& controller,
    boost::beast::http::request<boost::beast::http::empty_body>&& upgrade,
    const HttpRequestPtr& request) {
  auto session = std::make_shared<WebSocketSession<boost::asio::ip::tcp::socket>>(
      std::move(socket_), state_, io_, std::move(slot_), peer_, local_, controller);
  session->start(std::move(upgrade), request);
}

}  // namespace halvor::kelo::web
