#include "Listener.h"

#include <openssl/ssl.h>

#include <chrono>
#include <stdexcept>

#include "PlainHttpSession.h"
#include "SslHttpSession.h"
#include "kelo/web/Log.h"

namespace halvor::kelo::web {
namespace asio = boost::asio;
using tcp = asio::ip::tcp;

namespace {

InetAddress toInetAddress(const tcp::endpoint& endpoint) {
  return InetAddress(endpoint.address().to_string(), endpoint.port());
}

// TLS 1.2 with forward-secret AEAD suites only, and TLS 1.3 with its own (all AEAD); the
// server's order of preference decides; no compression, no renegotiation. "ssl_conf" commands
// of the listener come after this and may change it.
void applyModernProfile(SSL_CTX* context) {
  static const char* const kTls12Suites =
      "ECDHE-ECDSA-AES128-GCM-SHA256:ECDHE-RSA-AES128-GCM-SHA256:"
      "ECDHE-ECDSA-AES256-GCM-SHA384:ECDHE-RSA-AES256-GCM-SHA384:"
      "ECDHE-ECDSA-CHACHA20-POLY1305:ECDHE-RSA-CHACHA20-POLY1305";
  static const char* const kTls13Suites =
      "TLS_AES_128_GCM_SHA256:TLS_AES_256_GCM_SHA384:TLS_CHACHA20_POLY1305_SHA256";
  if (SSL_CTX_set_cipher_list(context, kTls12Suites) != 1 ||
      SSL_CTX_set_ciphersuites(context, kTls13Suites) != 1 ||
      SSL_CTX_set1_groups_list(context, "X25519:P-256:P-384") != 1) {
    throw std::runtime_error("Cannot set the TLS cipher suites");
  }
  SSL_CTX_set_options(
      context, SSL_OP_CIPHER_SERVER_PREFERENCE | SSL_OP_NO_COMPRESSION | SSL_OP_NO_RENEGOTIATION);
}

}  // namespace

Listener::Listener(const ListenerConfig& config, std::shared_ptr<asio::ssl::context> tls,
                   ServerStatePtr state, std::vector<IoThreadPtr> threads)
    : tls_(std::move(tls)),
      state_(std::move(state)),
      threads_(std::move(threads)),
      acceptor_(threads_.front()->context()),
      retryTimer_(threads_.front()->context()) {
  std::string where = config.address + ":" + std::to_string(config.port);
  boost::system::error_code ec;
  auto address = asio::ip::make_address(config.address, ec);
  if (ec) throw std::runtime_error("Cannot bind " + where + ": " + ec.message());
  tcp::endpoint endpoint(address, config.port);
  auto check = [&where](const boost::system::error_code& error) {
    if (error) throw std::runtime_error("Cannot bind " + where + ": " + error.message());
  };
  acceptor_.open(endpoint.protocol(), ec);
  check(ec);
  acceptor_.set_option(asio::socket_base::reuse_address(true), ec);
  check(ec);
  acceptor_.bind(endpoint, ec);
  check(ec);
  acceptor_.listen(asio::socket_base::max_listen_connections, ec);
  check(ec);
  bound_ = toInetAddress(acceptor_.local_endpoint());
}

std::shared_ptr<asio::ssl::context> Listener::makeTlsContext(const ListenerConfig& config) {
  auto context = std::make_shared<asio::ssl::context>(asio::ssl::context::tls_server);
  context->set_options(asio::ssl::context::default_workarounds | asio::ssl::context::no_sslv2 |
                       asio::ssl::context::no_sslv3 | asio::ssl::context::single_dh_use);
  SSL_CTX* native = context->native_handle();
  SSL_CTX_set_min_proto_version(native, config.useOldTls ? TLS1_VERSION : TLS1_2_VERSION);
  if (!config.useOldTls) applyModernProfile(native);
  boost::system::error_code ec;
  context->use_certificate_chain_file(config.certFile, ec);
  if (ec) {
    throw std::runtime_error("Cannot load TLS certificate \"" + config.certFile +
                             "\": " + ec.message());
  }
  context->use_private_key_file(config.keyFile, asio::ssl::context::pem, ec);
  if (ec) {
    throw std::runtime_error("Cannot load TLS private key \"" + config.keyFile +
                             "\": " + ec.message());
  }
  if (!config.sslConfCmds.empty()) {
    SSL_CONF_CTX* conf = SSL_CONF_CTX_new();
    SSL_CONF_CTX_set_flags(conf,
                           SSL_CONF_FLAG_FILE | SSL_CONF_FLAG_SERVER | SSL_CONF_FLAG_CERTIFICATE);
    SSL_CONF_CTX_set_ssl_ctx(conf, context->native_handle());
    for (const auto& [name, value] : config.sslConfCmds) {
      if (SSL_CONF_cmd(conf, name.c_str(), value.c_str()) <= 0) {
        SSL_CONF_CTX_free(conf);
        throw std::runtime_error("Bad TLS configuration command " + name + " " + value);
      }
    }
    SSL_CONF_CTX_finish(conf);
    SSL_CONF_CTX_free(conf);
  }
  return context;
}

void Listener::start() {
  asio::post(acceptor_.get_executor(), [self = shared_from_this()] { self->doAccept(); });
}

void Listener::stop() {
  asio::post(acceptor_.get_executor(), [self = shared_from_this()] {
    boost::system::error_code ignored;
    self->retryTimer_.cancel();
    self->acceptor_.close(ignored);
  });
}

void Listener::doAccept() {
  if (!acceptor_.is_open()) return;
  IoThreadPtr target = threads_[next_];
  next_ = (next_ + 1) % threads_.size();
  acceptor_.async_accept(target->context(), [self = shared_from_this(), target](
                                                boost::system::error_code ec, tcp::socket socket) {
    self->onAccept(ec, std::move(socket), target);
  });
}

void Listener::onAccept(boost::system::error_code ec, tcp::socket socket,
                        const IoThreadPtr& target) {
  if (ec == asio::error::operation_aborted || !acceptor_.is_open()) return;
  if (ec) {
    // Out of descriptors or similar: wait a little instead of spinning.
    logLine(kError, "Accept failed: " + ec.message());
    retryTimer_.expires_after(std::chrono::milliseconds(100));
    retryTimer_.async_wait([self = shared_from_this()](boost::system::error_code timerError) {
      if (!timerError) self->doAccept();
    });
    return;
  }
  startSession(std::move(socket), target);
  doAccept();
}

void Listener::startSession(tcp::socket socket, const IoThreadPtr& target) {
  boost::system::error_code ec;
  tcp::endpoint remote = socket.remote_endpoint(ec);
  if (ec) return;
  tcp::endpoint local = socket.local_endpoint(ec);
  if (ec) return;
  InetAddress peer = toInetAddress(remote);
  ConnectionLimiter::Slot slot;
  if (state_->stopping.load() || !state_->limiter.tryAdmit(peer.toIp(), slot)) {
    if (logEnabled(kDebug)) logLine(kDebug, "Refused connection from " + peer.toIpPort());
    socket.close(ec);
    return;
  }
  auto run = [tls = tls_, state = state_, target, socket = std::move(socket),
              slot = std::move(slot), peer = std::move(peer),
              local = toInetAddress(local)]() mutable {
    if (tls) {
      std::make_shared<SslHttpSession>(std::move(socket), std::move(tls), std::move(state), target,
                                       std::move(slot), std::move(peer), std::move(local))
          ->run();
    } else {
      std::make_shared<PlainHttpSession>(std::move(socket), std::move(state), target,
                                         std::move(slot), std::move(peer), std::move(local))
          ->run();
    }
  };
  if (target->isCurrent()) {
    run();
  } else {
    target->post(std::move(run));
  }
}

}  // namespace halvor::kelo::web
