#pragma once

#include <atomic>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core/buffers_to_string.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/stream_traits.hpp>
#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/message.hpp>
#include <boost/beast/websocket.hpp>
#include <chrono>
#include <deque>
#include <memory>
#include <string>

#include "ConnectionLimiter.h"
#include "IoThread.h"
#include "SessionErrors.h"
#include "kelo/web/Log.h"
#include "kelo/web/WebSocketConnection.h"
#include "kelo/web/WebSocketControllerBase.h"

namespace halvor::kelo::web {

// One upgraded connection over NextLayer (a TCP socket or a TLS stream). Reads run in a loop;
// writes go through a queue drained one at a time; every touch of the stream happens on the
// connection's I/O thread, other threads post to it.
template <class NextLayer>
class WebSocketSession : public WebSocketConnection,
                         public TrackedConnection,
                         public std::enable_shared_from_this<WebSocketSession<NextLayer>> {
 public:
  using UpgradeRequest = boost::beast::http::request<boost::beast::http::empty_body>;

  // How long a close handshake that we started may take before the socket is closed.
  static constexpr std::chrono::seconds kCloseGrace{5};

  WebSocketSession(NextLayer&& next, ServerStatePtr state, IoThreadPtr io,
                   ConnectionLimiter::Slot slot, InetAddress peer, InetAddress local,
                   WebSocketControllerPtr controller)
      : state_(std::move(state)),
        io_(std::move(io)),
        slot_(std::move(slot)),
        peer_(std::move(peer)),
        local_(std::move(local)),
        controller_(std::move(controller)),
        ws_(std::move(next)),
        closeTimer_(io_->context()) {
    state_->webSockets.fetch_add(1, std::memory_order_relaxed);
  }
  ~WebSocketSession() override { state_->webSockets.fetch_sub(1, std::memory_order_relaxed); }

  // On the I/O thread.
  void start(UpgradeRequest upgrade, HttpRequestPtr request) {
    io_->track(this->weak_from_this());
    namespace websocket = boost::beast::websocket;
    websocket::stream_base::timeout timeouts{};
    timeouts.handshake_timeout = std::chrono::seconds(30);
    // Keep-alive pings at half the idle time: a live peer answers them, a dead one is closed.
    timeouts.idle_timeout = state_->config.idleConnectionTimeout == 0
                                ? websocket::stream_base::none()
                                : std::chrono::seconds(state_->config.idleConnectionTimeout);
    timeouts.keep_alive_pings = true;
    ws_.set_option(timeouts);
    ws_.read_message_max(state_->config.clientMaxWebSocketMessageSize);
    ws_.auto_fragment(false);
    ws_.control_callback([this](websocket::frame_type kind, boost::beast::string_view) {
      if (kind == websocket::frame_type::close) onCloseFrame();
    });
    upgradeRequest_ = std::move(request);
    ws_.async_accept(upgrade, [self = this->shared_from_this()](boost::beast::error_code ec) {
      self->onAccept(ec);
    });
  }

  void send(const std::string& message, WebSocketMessageType type) override {
    send(message.data(), message.size(), type);
  }

  void send(const char* data, std::size_t length, WebSocketMessageType type) override {
    queueData(data, length, type,
              [data, length] { return std::make_shared<const std::string>(data, length); });
  }

  // Queues `message` itself: no copy per connection of a frame sent to many.
  void sendShared(std::shared_ptr<const std::string> message, WebSocketMessageType type) override {
    const std::string& text = *message;
    queueData(text.data(), text.size(), type, [&message] { return std::move(message); });
  }

  void shutdown(std::uint16_t code, const std::string& reason) override {
    if (!connected_.exchange(false)) return;
    runOnThread(
        [self = this->shared_from_this(), code, reason] { self->queueClose(code, reason); });
  }

  void forceClose() override {
    connected_.store(false);
    runOnThread([self = this->shared_from_this()] { self->closeSocket(); });
  }

  bool connected() const override { return connected_.load(); }
  const InetAddress& peerAddr() const override { return peer_; }
  const InetAddress& localAddr() const override { return local_; }

  void closeIfIdle(std::uint64_t) override {}  // the stream's own timeouts handle idleness
  void closeForShutdown() override {
    connected_.store(false);
    closeSocket();
  }

 private:
  enum class Kind { Data, Ping, Pong, Close };
  struct Outgoing {
    Kind kind = Kind::Data;
    bool text = false;
    std::shared_ptr<const std::string> data;
    std::size_t bytes = 0;
    std::uint16_t code = kNormalClosure;
  };

  // The checks of every send, then the frame posted to the I/O thread; `takeData` gives the
  // queued copy of data[0, length), called only when the frame is queued.
  template <class TakeData>
  void queueData(const char* data, std::size_t length, WebSocketMessageType type,
                 TakeData&& takeData) {
    if (!connected_.load()) return;
    if (type == WebSocketMessageType::Close) {
      shutdown(kNormalClosure, std::string(data, length));
      return;
    }
    std::size_t cap = state_->config.clientMaxWebSocketSendQueue;
    std::size_t before = pendingBytes_.fetch_add(length);
    if (cap != 0 && before + length > cap) {
      pendingBytes_.fetch_sub(length);
      overflow();
      return;
    }
    Outgoing item;
    item.kind = kindOf(type);
    item.text = type == WebSocketMessageType::Text;
    item.data = takeData();
    item.bytes = length;
    runOnThread([self = this->shared_from_this(), item = std::move(item)]() mutable {
      self->enqueue(std::move(item));
    });
  }

  static Kind kindOf(WebSocketMessageType type) {
    if (type == WebSocketMessageType::Ping) return Kind::Ping;
    if (type == WebSocketMessageType::Pong) return Kind::Pong;
    return Kind::Data;
  }

  template <class F>
  void runOnThread(F&& function) {
    if (io_->isCurrent()) {
      function();
    } else {
      io_->post(std::forward<F>(function));
    }
  }

  WebSocketConnectionPtr self() { return this->shared_from_this(); }

  void onAccept(boost::beast::error_code ec) {
    if (ec || state_->stopping.load()) {
      ended_ = true;
      if (ec) SessionErrors::fail(ec, "websocket accept");
      controller_.reset();
      upgradeRequest_.reset();
      closeSocket();
      return;
    }
    connected_.store(true);
    callController("handleNewConnection",
                   [this] { controller_->handleNewConnection(upgradeRequest_, self()); });
    if (!ended_) doRead();
  }

  // What a controller member throws is logged and goes no further: the connection and its I/O
  // thread carry on.
  template <class Call>
  static void callController(const char* member, Call&& call) {
    try {
      call();
    } catch (const std::exception& error) {
      logLine(kError, std::string("WebSocket ") + member + " threw: " + error.what());
    } catch (...) {
      logLine(kError, std::string("WebSocket ") + member + " threw");
    }
  }

  void doRead() {
    ws_.async_read(readBuffer_,
                   [self = this->shared_from_this()](boost::beast::error_code ec, std::size_t) {
                     self->onRead(ec);
                   });
  }

  void onRead(boost::beast::error_code ec) {
    if (ec) return onEnd(ec);
    WebSocketMessageType type =
        ws_.got_text() ? WebSocketMessageType::Text : WebSocketMessageType::Binary;
    std::string message = boost::beast::buffers_to_string(readBuffer_.data());
    readBuffer_.consume(readBuffer_.size());
    // Plug-ins may be shutting down: a message read now reaches no controller.
    if (!state_->stopping.load()) {
      callController("handleNewMessage",
                     [&] { controller_->handleNewMessage(self(), std::move(message), type); });
    }
    doRead();
  }

  // Inside the read of the client's close frame. Left alone, the stream answers it right after
  // with the client's own code; a close started here is the answer instead (1000, no reason).
  // A shutdown() from the controller is a no-op by now. A code that no endpoint may send is a
  // protocol error, answered with 1002 like the stream's own checks, and is not a close the
  // controller hears of.
  void onCloseFrame() {
    connected_.store(false);
    if (!isAllowedCloseCode(ws_.reason().code)) {
      answerClose(boost::beast::websocket::close_code::protocol_error);
      return;
    }
    answerClose(boost::beast::websocket::close_code::normal);
    std::string reason(ws_.reason().reason.data(), ws_.reason().reason.size());
    callController("handleNewMessage", [&] {
      controller_->handleNewMessage(self(), std::move(reason), WebSocketMessageType::Close);
    });
  }

  // Beast 1.74's read, back from this callback, sends no close of its own once the stream is
  // closing: a close that gets the write lock at once makes it so, and one that waits for a
  // write in progress is handed the lock before the read, which then finds the stream closed.
  // Our own close frame, once on its way, is the answer as it stands.
  void answerClose(boost::beast::websocket::close_code code) {
    if (closeStarted_) return;
    dropQueued();
    closeQueued_ = true;
    closeStarted_ = true;
    ws_.async_close(code, [self = this->shared_from_this()](boost::beast::error_code ec) {
      if (ec) SessionErrors::fail(ec, "websocket close");
    });
    armCloseTimer();
  }

  // The codes a peer may put in a close frame: none at all, those defined for the protocol
  // (1000-1003, 1007-1013; 1004-1006 and 1014-1015 are reserved), those registered for
  // libraries and applications (3000-3999) and private ones (4000-4999). Everything else,
  // 5000 and above included, is not a close but an error. The stream itself already fails the
  // reserved ones and those below 3000 with 1002; it lets 5000 and above through.
  static bool isAllowedCloseCode(std::uint16_t code) {
    if (code == boost::beast::websocket::close_code::none) return true;
    if (code >= 1000 && code <= 1003) return true;
    if (code >= 1007 && code <= 1013) return true;
    return code >= 3000 && code <= 4999;
  }

  void onEnd(boost::beast::error_code ec) {
    SessionErrors::fail(ec, "websocket read");
    connected_.store(false);
    ended_ = true;
    closeTimer_.cancel();
    dropQueued();
    if (!closedNotified_) {
      closedNotified_ = true;
      callController("handleConnectionClosed",
                     [this] { controller_->handleConnectionClosed(self()); });
    }
    // A controller that keeps the connection would otherwise keep itself alive through it.
    controller_.reset();
    upgradeRequest_.reset();
    closeSocket();
  }

  void queueClose(std::uint16_t code, const std::string& reason) {
    if (closeQueued_ || ended_) return;
    Outgoing item;
    item.kind = Kind::Close;
    item.code = code;
    item.data = std::make_shared<const std::string>(reason.substr(0, 123));
    enqueue(std::move(item));
    armCloseTimer();
  }

  void enqueue(Outgoing item) {
    if (ended_ || (closeQueued_ && item.kind != Kind::Close)) {
      pendingBytes_.fetch_sub(item.bytes);
      return;
    }
    if (item.kind == Kind::Close) closeQueued_ = true;
    queue_.push_back(std::move(item));
    if (queue_.size() == 1) writeNext();
  }

  void writeNext() {
    namespace websocket = boost::beast::websocket;
    Outgoing& item = queue_.front();
    auto onWritten = [self = this->shared_from_this()](boost::beast::error_code ec,
                                                       std::size_t = 0) { self->onWrite(ec); };
    switch (item.kind) {
      case Kind::Data:
        ws_.text(item.text);
        ws_.async_write(boost::asio::buffer(*item.data), onWritten);
        break;
      case Kind::Ping:
        ws_.async_ping(websocket::ping_data(item.data->substr(0, 125).c_str()),
                       [onWritten](boost::beast::error_code ec) mutable { onWritten(ec); });
        break;
      case Kind::Pong:
        ws_.async_pong(websocket::ping_data(item.data->substr(0, 125).c_str()),
                       [onWritten](boost::beast::error_code ec) mutable { onWritten(ec); });
        break;
      case Kind::Close:
        closeStarted_ = true;
        ws_.async_close(
            websocket::close_reason(static_cast<websocket::close_code>(item.code), *item.data),
            [onWritten](boost::beast::error_code ec) mutable { onWritten(ec); });
        break;
    }
  }

  void onWrite(boost::beast::error_code ec) {
    pendingBytes_.fetch_sub(queue_.front().bytes);
    queue_.pop_front();
    if (ec) {
      SessionErrors::fail(ec, "websocket write");
      connected_.store(false);
      dropQueued();
      closeSocket();
      return;
    }
    if (!queue_.empty()) writeNext();
  }

  void overflow() {
    if (!connected_.exchange(false)) return;
    runOnThread([self = this->shared_from_this()] {
      logLine(kWarn, "WebSocket send queue of " + self->peer_.toIpPort() +
                         " is full: closing the connection");
      self->dropQueued();
      self->queueClose(kViolation, "Send queue full");
    });
  }

  // Everything queued but the frame being written.
  void dropQueued() {
    while (queue_.size() > 1) {
      pendingBytes_.fetch_sub(queue_.back().bytes);
      queue_.pop_back();
    }
  }

  void armCloseTimer() {
    closeTimer_.expires_after(kCloseGrace);
    closeTimer_.async_wait([self = this->shared_from_this()](boost::beast::error_code ec) {
      if (!ec) self->closeSocket();
    });
  }

  // Also stops the stream's own timer, which would otherwise keep the I/O loop busy, and gives
  // the connection's place back to the limiter.
  void closeSocket() {
    namespace websocket = boost::beast::websocket;
    websocket::stream_base::timeout off{};
    off.handshake_timeout = websocket::stream_base::none();
    off.idle_timeout = websocket::stream_base::none();
    off.keep_alive_pings = false;
    ws_.set_option(off);
    boost::beast::error_code ignored;
    boost::beast::get_lowest_layer(ws_).close(ignored);
    slot_ = ConnectionLimiter::Slot();
  }

  ServerStatePtr state_;
  IoThreadPtr io_;
  ConnectionLimiter::Slot slot_;
  InetAddress peer_;
  InetAddress local_;
  WebSocketControllerPtr controller_;
  HttpRequestPtr upgradeRequest_;
  boost::beast::websocket::stream<NextLayer> ws_;
  boost::asio::steady_timer closeTimer_;
  boost::beast::flat_buffer readBuffer_;
  std::deque<Outgoing> queue_;
  std::atomic<bool> connected_{false};
  std::atomic<std::size_t> pendingBytes_{0};
  bool closeQueued_ = false;
  // A close frame has been handed to the stream.
  bool closeStarted_ = false;
  bool ended_ = false;
  bool closedNotified_ = false;
};

}  // namespace halvor::kelo::web
