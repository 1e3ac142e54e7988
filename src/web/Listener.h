#pragma once

#include <atomic>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/asio/steady_timer.hpp>
#include <memory>
#include <vector>

#include "IoThread.h"
#include "ServerState.h"
#include "kelo/web/WebConfig.h"

namespace halvor::kelo::web {

// Accepts the connections of one listening address and hands each to the next I/O thread in
// turn, checking the connection limits first.
class Listener : public std::enable_shared_from_this<Listener> {
 public:
  // Binds at once; throws std::runtime_error "Cannot bind 0.0.0.0:7000: Address already in use".
  // The acceptor lives on `threads[0]`.
  Listener(const ListenerConfig& config, std::shared_ptr<boost::asio::ssl::context> tls,
           ServerStatePtr state, std::vector<IoThreadPtr> threads);

  // Make TLS context from the listener's files; throws std::runtime_error naming the file.
  static std::shared_ptr<boost::asio::ssl::context> makeTlsContext(const ListenerConfig& config);

  void start();  // from any thread
  void stop();   // from any thread
  InetAddress boundAddress() const { return bound_; }

 private:
  void doAccept();
  void onAccept(boost::system::error_code ec, boost::asio::ip::tcp::socket socket,
                const IoThreadPtr& target);
  void startSession(boost::asio::ip::tcp::socket socket, const IoThreadPtr& target);

  std::shared_ptr<boost::asio::ssl::context> tls_;
  ServerStatePtr state_;
  std::vector<IoThreadPtr> threads_;
  boost::asio::ip::tcp::acceptor acceptor_;
  boost::asio::steady_timer retryTimer_;
  InetAddress bound_;
  std::size_t next_ = 0;
};

}  // namespace halvor::kelo::web
