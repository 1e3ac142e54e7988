#pragma once

#include <array>
#include <boost/asio/buffer.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/error.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/websocket/rfc6455.hpp>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "ConnectionLimiter.h"
#include "IoThread.h"
#include "RequestParser.h"
#include "ResponseSerializer.h"
#include "ServerState.h"
#include "SessionErrors.h"
#include "WebSocketSession.h"
#include "kelo/web/Log.h"

namespace halvor::kelo::web {

// One HTTP connection, plain or TLS (Derived provides stream(), closeSocket(), doEof() and
// upgrade()). Requests are handled one at a time and in order: the next one is read after the
// response to the previous one was written. The request, parser state, input and output
// buffers are reused from one request to the next.
template <class Derived>
class HttpSession : public TrackedConnection {
 public:
  HttpSession(ServerStatePtr state, IoThreadPtr io, ConnectionLimiter::Slot slot, InetAddress peer,
              InetAddress local)
      : state_(std::move(state)),
        io_(std::move(io)),
        slot_(std::move(slot)),
        peer_(std::move(peer)),
        local_(std::move(local)) {}

  void closeIfIdle(std::uint64_t now) override {
    if (lingering_ && now - lastActivity_ >= kLingerSeconds) {
      derived().closeSocket();
    } else if (reading_ && state_->config.idleConnectionTimeout != 0 &&
               now - lastActivity_ >= state_->config.idleConnectionTimeout) {
      derived().closeSocket();
    }
  }
  void closeForShutdown() override { derived().closeSocket(); }

 protected:
  // How long a connection we close may drain what the client still sends.
  static constexpr std::uint64_t kLingerSeconds = 2;

  Derived& derived() { return static_cast<Derived&>(*this); }

  void beginTracking() {
    lastActivity_ = io_->ticks();
    io_->track(derived().weak_from_this());
  }

  void doRead() {
    if (state_->stopping.load()) return derived().closeSocket();
    prepareRequest();
    parser_.emplace(*request_, state_->config.clientMaxMemoryBodySize, state_->temporaryDirectory);
    parser_->header_limit(static_cast<std::uint32_t>(state_->config.maxHeaderSize));
    parser_->body_limit(state_->config.clientMaxBodySize);
    reading_ = true;
    lastActivity_ = io_->ticks();
    boost::beast::http::async_read_header(
        derived().stream(), buffer_, *parser_,
        [self = derived().shared_from_this()](boost::beast::error_code ec, std::size_t) {
          self->onReadHeader(ec);
        });
  }

  void onReadHeader(boost::beast::error_code ec) {
    if (ec) return onReadError(ec);
    lastActivity_ = io_->ticks();
    if (parser_->is_done()) return onRequestComplete();
    if (parser_->expectsContinue()) {
      static const std::string kContinue = "HTTP/1.1 100 Continue\r\n\r\n";
      boost::asio::async_write(
          derived().stream(), boost::asio::buffer(kContinue),
          [self = derived().shared_from_this()](boost::beast::error_code writeError, std::size_t) {
            if (writeError) return SessionErrors::fail(writeError, "write");
            self->readBody();
          });
      return;
    }
    readBody();
  }

  void readBody() {
    boost::beast::http::async_read_some(
        derived().stream(), buffer_, *parser_,
        [self = derived().shared_from_this()](boost::beast::error_code ec, std::size_t) {
          self->onReadBody(ec);
        });
  }

  void onReadBody(boost::beast::error_code ec) {
    if (ec) return onReadError(ec);
    lastActivity_ = io_->ticks();
    if (parser_->is_done()) return onRequestComplete();
    readBody();
  }

  void onReadError(boost::beast::error_code ec) {
    namespace http = boost::beast::http;
    reading_ = false;
    if (ec == http::error::end_of_stream) return derived().doEof();
    if (ec == http::error::header_limit) return respondAndClose(k431RequestHeaderFieldsTooLarge);
    if (ec == http::error::body_limit) return respondAndClose(k413RequestEntityTooLarge);
    if (ec == http::error::partial_message ||
        ec.category() != http::make_error_code(http::error::end_of_stream).category()) {
      SessionErrors::fail(ec, "read");
      return derived().closeSocket();
    }
    respondAndClose(k400BadRequest);
  }

  void respondAndClose(int status) {
    beginMeasure();
    keepAlive_ = false;
    ++sequence_;
    awaiting_ = true;
    auto response = std::make_shared<HttpResponse>();
    response->setStatusCode(status);
    response->setCloseConnection(true);
    onResponse(sequence_, response);
  }

  void onRequestComplete() {
    beginMeasure();
    reading_ = false;
    // Plug-ins may be shutting down: a request read now reaches no handler.
    if (state_->stopping.load()) return respondAndClose(k503ServiceUnavailable);
    keepAlive_ = parser_->keep_alive();
    ++sequence_;
    awaiting_ = true;
    if (request_->method() == Invalid) {
      return respondLocal(k405MethodNotAllowed, "GET, HEAD, POST, PUT, DELETE, OPTIONS, PATCH");
    }
    if (state_->preRoutingAdvices.empty()) return route();
    runPreRoutingAdvice(0);
  }

  void runPreRoutingAdvice(std::size_t index) {
    auto& advice = state_->preRoutingAdvices[index];
    try {
      advice(request_, makeCallback(),
             [self = derived().shared_from_this(), sequence = sequence_, index] {
               self->continueAdvices(sequence, index + 1);
             });
    } catch (...) {
      onHandlerException("pre-routing advice");
    }
  }

  void continueAdvices(std::uint64_t sequence, std::size_t next) {
    if (!io_->isCurrent()) {
      io_->post([self = derived().shared_from_this(), sequence, next] {
        self->continueAdvices(sequence, next);
      });
      return;
    }
    if (sequence != sequence_ || !awaiting_) return;
    if (next < state_->preRoutingAdvices.size()) return runPreRoutingAdvice(next);
    route();
  }

  void route() {
    Router::Match match =
        state_->router.match(request_->path(), request_->method(), request_->routingParameters());
    switch (match.outcome) {
      case Router::Outcome::Found:
        return invoke(state_->routes[match.target]);
      case Router::Outcome::MethodNotAllowed:
        return respondLocal(k405MethodNotAllowed, Router::allowHeader(match.allowedMethods));
      case Router::Outcome::NotFound:
        return serveStaticFile();
    }
  }

  void invoke(const RouteEntry& entry) {
    route_ = &entry.pattern;
    if (entry.webSocket) return upgrade(entry);
    try {
      entry.handler(request_, makeCallback());
    } catch (...) {
      onHandlerException(entry.pattern);
    }
  }

  void onHandlerException(const std::string& where) {
    std::string what = "unknown exception";
    try {
      throw;
    } catch (const std::exception& error) {
      what = error.what();
    } catch (...) {
    }
    logLine(kError, "Handler of " + where + " threw: " + what);
    auto response = std::make_shared<HttpResponse>();
    response->setStatusCode(k500InternalServerError);
    onResponse(sequence_, response);
  }

  void serveStaticFile() {
    HttpMethod method = request_->method();
    std::string file = state_->staticFiles ? state_->staticFiles->resolve(request_->path()) : "";
    if (file.empty()) return respondLocal(k404NotFound, "");
    if (method != Get && method != Head) return respondLocal(k405MethodNotAllowed, "GET, HEAD");
    auto response = std::make_shared<HttpResponse>();
    if (!StaticFiles::load(file, *response)) return respondLocal(k404NotFound, "");
    onResponse(sequence_, response);
  }

  void upgrade(const RouteEntry& entry) {
    namespace http = boost::beast::http;
    if (request_->method() != Get) return respondLocal(k405MethodNotAllowed, "GET");
    http::request<http::empty_body> upgradeRequest;
    upgradeRequest.method(http::verb::get);
    upgradeRequest.target(request_->query().empty() ? request_->path()
                                                    : request_->path() + "?" + request_->query());
    upgradeRequest.version(static_cast<int>(request_->version()));
    for (const auto& [name, value] : request_->headers()) upgradeRequest.insert(name, value);
    if (!boost::beast::websocket::is_upgrade(upgradeRequest)) {
      return respondLocal(k400BadRequest, "");
    }
    awaiting_ = false;
    observe(k101SwitchingProtocols);
    derived().upgradeToWebSocket(entry.webSocket, std::move(upgradeRequest), request_);
  }

  // A response of the layer itself; `allow` non-empty adds an Allow header.
  void respondLocal(int status, const std::string& allow) {
    auto response = std::make_shared<HttpResponse>();
    response->setStatusCode(status);
    if (!allow.empty()) response->addHeader("Allow", allow);
    onResponse(sequence_, response);
  }

  ResponseCallback makeCallback() {
    return [self = derived().shared_from_this(), sequence = sequence_](
               const HttpResponsePtr& response) { self->deliver(sequence, response); };
  }

  void deliver(std::uint64_t sequence, const HttpResponsePtr& response) {
    if (io_->isCurrent()) return onResponse(sequence, response);
    io_->post([self = derived().shared_from_this(), sequence, response] {
      self->onResponse(sequence, response);
    });
  }

  void onResponse(std::uint64_t sequence, HttpResponsePtr response) {
    if (sequence != sequence_ || !awaiting_) return;  // a second answer to one request
    awaiting_ = false;
    if (!response) {
      response = std::make_shared<HttpResponse>();
      response->setStatusCode(k500InternalServerError);
    }
    observe(response->statusCode());
    try {
      state_->applyCreationAdvices(response);
    } catch (...) {
      logLine(kError, "A response creation advice threw");
    }
    closeAfterWrite_ = !keepAlive_ || response->ifCloseConnection() || state_->stopping.load();
    ResponseSerializer::Options options;
    options.close = closeAfterWrite_;
    options.keepAliveHeader = !closeAfterWrite_ && request_->version() == 10;
    options.serverHeader = state_->config.serverHeader;
    ResponseSerializer::writeHead(*response, options, head_);
    response_ = std::move(response);
    bool withBody = request_->method() != Head &&
                    ResponseSerializer::statusHasBody(response_->statusCode()) &&
                    !response_->body().empty();
    auto onWritten = [self = derived().shared_from_this()](boost::beast::error_code ec,
                                                           std::size_t) { self->onWrite(ec); };
    if (withBody) {
      std::array<boost::asio::const_buffer, 2> buffers = {boost::asio::buffer(head_),
                                                          boost::asio::buffer(response_->body())};
      boost::asio::async_write(derived().stream(), buffers, std::move(onWritten));
    } else {
      boost::asio::async_write(derived().stream(), boost::asio::buffer(head_),
                               std::move(onWritten));
    }
  }

  void onWrite(boost::beast::error_code ec) {
    response_.reset();
    if (ec) {
      SessionErrors::fail(ec, "write");
      return derived().closeSocket();
    }
    lastActivity_ = io_->ticks();
    if (closeAfterWrite_) return derived().doEof();
    doRead();
  }

  // Counting hooks, for the application's TrafficObserver: the clock starts when a request is
  // complete, and the route is the one that took it, if any.
  void beginMeasure() {
    route_ = &kNoRoute;
    if (state_->trafficObserver) requestComplete_ = std::chrono::steady_clock::now();
  }
  void observe(int status) {
    if (!state_->trafficObserver) return;
    state_->trafficObserver->onResponse(*route_, request_->method(), status,
                                        std::chrono::steady_clock::now() - requestComplete_);
  }

  // The request object is reused unless a handler still holds it.
  void prepareRequest() {
    if (request_ && request_.use_count() == 1) {
      request_->reset();
    } else {
      request_ = std::make_shared<HttpRequest>();
    }
    request_->setPeerAddr(peer_);
    request_->setLocalAddr(local_);
  }

  // Reads and drops what the client still sends after we shut our side, for a short while,
  // so that the kernel does not answer it with a reset that destroys our last response.
  void linger() {
    lingering_ = true;
    lastActivity_ = io_->ticks();
    // What is read is thrown away, so all connections of a thread may share the buffer.
    thread_local std::array<char, 4096> discarded;
    derived().stream().async_read_some(
        boost::asio::buffer(discarded),
        [self = derived().shared_from_this()](boost::beast::error_code ec, std::size_t) {
          if (ec) return self->derived().closeSocket();
          self->linger();
        });
  }

  ServerStatePtr state_;
  IoThreadPtr io_;
  ConnectionLimiter::Slot slot_;
  InetAddress peer_;
  InetAddress local_;
  boost::beast::flat_buffer buffer_;
  std::optional<RequestParser> parser_;
  HttpRequestPtr request_;
  HttpResponsePtr response_;
  std::string head_;
  static inline const std::string kNoRoute;
  const std::string* route_ = &kNoRoute;
  std::chrono::steady_clock::time_point requestComplete_;
  std::uint64_t sequence_ = 0;
  std::uint64_t lastActivity_ = 0;
  bool awaiting_ = false;
  bool keepAlive_ = true;
  bool closeAfterWrite_ = false;
  bool reading_ = false;
  bool lingering_ = false;
};

}  // namespace halvor::kelo::web
