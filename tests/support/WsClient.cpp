#include "WsClient.h"

#include <boost/asio/connect.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl.hpp>
#include <boost/beast/core/buffers_to_string.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/websocket.hpp>
#include <boost/beast/websocket/ssl.hpp>
#include <stdexcept>

namespace halvor::kelo::test {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
namespace websocket = beast::websocket;
using tcp = asio::ip::tcp;

struct WsClient::Impl {
  std::string host;
  std::uint16_t port;
  bool tls;
  std::chrono::milliseconds timeout{5000};
  int receiveBuffer = 0;
  asio::io_context context;
  asio::ssl::context tlsContext{asio::ssl::context::tls_client};
  std::optional<websocket::stream<tcp::socket>> plain;
  std::optional<websocket::stream<asio::ssl::stream<tcp::socket>>> secure;
  beast::flat_buffer buffer;
  bool open = false;
  bool readPending = false;
  bool readDone = false;
  beast::error_code readError;
  Message message;
  std::uint16_t closeCode = 0;
  std::string closeReason;

  tcp::socket& socket() {
    return tls ? beast::get_lowest_layer(*secure) : beast::get_lowest_layer(*plain);
  }

  template <class F>
  void withStream(F&& function) {
    if (tls) {
      function(*secure);
    } else {
      function(*plain);
    }
  }

  // Runs the loop until `done` or until `deadline`; false when the time passed.
  bool runUntil(const bool& done, std::chrono::steady_clock::time_point deadline) {
    context.restart();
    while (!done) {
      if (context.run_one_until(deadline) == 0) break;
    }
    return done;
  }

  void startRead() {
    readPending = true;
    readDone = false;
    withStream([this](auto& stream) {
      stream.async_read(buffer, [this, &stream](beast::error_code ec, std::size_t) {
        readPending = false;
        readDone = true;
        readError = ec;
        if (!ec) {
          message.text = stream.got_text();
          message.data = beast::buffers_to_string(buffer.data());
          buffer.consume(buffer.size());
        } else {
          // A close frame may have arrived even when the socket then failed.
          recordClose(stream);
          open = false;
        }
      });
    });
  }

  template <class Stream>
  void recordClose(Stream& stream) {
    if (stream.reason().code == websocket::close_code::none) return;
    closeCode = static_cast<std::uint16_t>(stream.reason().code);
    closeReason = std::string(stream.reason().reason.data(), stream.reason().reason.size());
  }

  void abort() {
    beast::error_code ignored;
    socket().close(ignored);
    context.restart();
    context.run();
    open = false;
  }
};

WsClient::WsClient(std::string host, std::uint16_t port, bool tls)
    : impl_(std::make_unique<Impl>()) {
  impl_->host = std::move(host);
  impl_->port = port;
  impl_->tls = tls;
  impl_->tlsContext.set_verify_mode(asio::ssl::verify_none);
}

WsClient::~WsClient() {
  if (impl_->plain || impl_->secure) impl_->abort();
}

void WsClient::setTimeout(std::chrono::milliseconds timeout) { impl_->timeout = timeout; }

void WsClient::setReceiveBufferSize(int bytes) { impl_->receiveBuffer = bytes; }

void WsClient::connect(const std::string& target, const Headers& headers) {
  Impl& impl = *impl_;
  if (impl.tls) {
    impl.secure.emplace(impl.context, impl.tlsContext);
  } else {
    impl.plain.emplace(impl.context);
  }
  auto deadline = std::chrono::steady_clock::now() + impl.timeout;
  tcp::resolver resolver(impl.context);
  auto endpoints = resolver.resolve(impl.host, std::to_string(impl.port));
  tcp::socket& socket = impl.socket();
  socket.open(endpoints.begin()->endpoint().protocol());
  if (impl.receiveBuffer > 0) {
    socket.set_option(asio::socket_base::receive_buffer_size(impl.receiveBuffer));
  }
  bool done = false;
  beast::error_code result;
  socket.async_connect(*endpoints.begin(), [&](beast::error_code ec) {
    result = ec;
    done = true;
  });
  if (!impl.runUntil(done, deadline)) {
    impl.abort();
    throw std::runtime_error("connect: timed out");
  }
  if (result) throw std::runtime_error("connect: " + result.message());
  if (impl.tls) {
    done = false;
    impl.secure->next_layer().async_handshake(asio::ssl::stream_base::client,
                                              [&](beast::error_code ec) {
                                                result = ec;
                                                done = true;
                                              });
    if (!impl.runUntil(done, deadline)) {
      impl.abort();
      throw std::runtime_error("TLS handshake: timed out");
    }
    if (result) throw std::runtime_error("TLS handshake: " + result.message());
  }
  websocket::response_type response;
  done = false;
  impl.withStream([&](auto& stream) {
    stream.set_option(websocket::stream_base::decorator([headers](websocket::request_type& req) {
      for (const auto& [name, value] : headers) req.set(name, value);
    }));
    stream.async_handshake(response, impl.host + ":" + std::to_string(impl.port), target,
                           [&](beast::error_code ec) {
                             result = ec;
                             done = true;
                           });
  });
  if (!impl.runUntil(done, deadline)) {
    impl.abort();
    throw std::runtime_error("WebSocket handshake: timed out");
  }
  if (result) {
    throw std::runtime_error("WebSocket handshake refused with status " +
                             std::to_string(response.result_int()) + ": " + result.message());
  }
  impl.open = true;
}

void WsClient::sendText(const std::string& text) { send(text, true); }

void WsClient::sendBinary(const std::string& data) { send(data, false); }

void WsClient::send(const std::string& payload, bool text) {
  Impl& impl = *impl_;
  bool done = false;
  beast::error_code result;
  impl.withStream([&](auto& stream) {
    stream.text(text);
    stream.async_write(asio::buffer(payload), [&](beast::error_code ec, std::size_t) {
      result = ec;
      done = true;
    });
  });
  if (!impl.runUntil(done, std::chrono::steady_clock::now() + impl.timeout)) {
    impl.abort();
    throw std::runtime_error("WebSocket write: timed out");
  }
  if (result) throw std::runtime_error("WebSocket write: " + result.message());
}

std::optional<WsClient::Message> WsClient::receive(std::chrono::milliseconds timeout) {
  Impl& impl = *impl_;
  if (!impl.readPending && !impl.readDone) {
    if (!impl.open) return std::nullopt;
    impl.startRead();
  }
  if (!impl.runUntil(impl.readDone, std::chrono::steady_clock::now() + timeout)) {
    return std::nullopt;  // the read stays pending for the next call
  }
  impl.readDone = false;
  if (impl.readError) return std::nullopt;
  return impl.message;
}

bool WsClient::close(std::uint16_t code, const std::string& reason) {
  Impl& impl = *impl_;
  if (!impl.open) return false;
  auto deadline = std::chrono::steady_clock::now() + impl.timeout;
  bool done = false;
  beast::error_code result;
  impl.withStream([&](auto& stream) {
    stream.async_close(websocket::close_reason(static_cast<websocket::close_code>(code), reason),
                       [&](beast::error_code ec) {
                         result = ec;
                         done = true;
                       });
  });
  if (!impl.runUntil(done, deadline)) {
    impl.abort();
    return false;
  }
  // The close operation reads (and drops) frames until the server's close frame arrives; a read
  // of ours still pending ends with it.
  if (impl.readPending) impl.runUntil(impl.readDone, deadline);
  impl.readDone = false;
  impl.open = false;
  if (result && result != websocket::error::closed) return false;
  impl.withStream([&](auto& stream) { impl.recordClose(stream); });
  return true;
}

bool WsClient::waitForClose(std::chrono::milliseconds timeout) {
  auto deadline = std::chrono::steady_clock::now() + timeout;
  while (std::chrono::steady_clock::now() < deadline) {
    auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        deadline - std::chrono::steady_clock::now());
    receive(left);
    if (!impl_->open && !impl_->readPending) return true;
  }
  return !impl_->open && !impl_->readPending;
}

bool WsClient::isOpen() const { return impl_->open; }

std::uint16_t WsClient::closeCode() const { return impl_->closeCode; }

std::string WsClient::closeReason() const { return impl_->closeReason; }

}  // namespace halvor::kelo::test
