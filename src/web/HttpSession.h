#pragma once

#include <algorithm>
#include <array>
#include <boost/asio/buffer.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/buffers_suffix.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/error.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/websocket/rfc6455.hpp>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "ConnectionLimiter.h"
#include "IoThread.h"
#include "OriginCheck.h"
#include "RequestParser.h"
#include "ResponseSerializer.h"
#include "ServerState.h"
#include "SessionErrors.h"
#include "WebSocketSession.h"
#include "kelo/web/Log.h"

namespace halvor::kelo::web {

// One HTTP connection, plain or TLS (Derived provides stream(), closeSocket(), doEof(),
// upgrade() and kSecure). Requests are handled one at a time and in order: the next one is read
// after the response to the previous one was written. The request, parser state, input and
// output buffers are reused from one request to the next. A connection that makes no progress
// for idle_connection_timeout, reading or writing, is closed.
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
    } else if ((reading_ || writing_) && state_->config.idleConnectionTimeout != 0 &&
               now - lastActivity_ >= state_->config.idleConnectionTimeout) {
      derived().closeSocket();
    }
  }
  // At shutdown an answer already on its way is written whole, and one that a handler still owes
  // becomes 503, as for a request read during the shutdown: a client whose request made the
  // host restart (a new certificate) gets its answer before the process goes away. Connections
  // between requests close at once. The I/O thread's grace period bounds a peer that never reads.
  void closeForShutdown() override {
    if (writing_) {
      closeAfterWrite_ = true;
      return;
    }
    if (awaiting_) return respondLocal(k503ServiceUnavailable, "");
    derived().closeSocket();
  }

 protected:
  // How long a connection we close may drain what the client still sends.
  static constexpr std::uint64_t kLingerSeconds = 2;

  Derived& derived() { return static_cast<Derived&>(*this); }

  void beginTracking() {
    lastActivity_ = io_->ticks();
    io_->track(derived().weak_from_this());
    cookieAttributes_ = cookieAttributes(state_->config.cookieSameSite, Derived::kSecure);
  }

  // The largest body a request may have: one above the memory limit goes to a file, and must
  // fit the file's limit as well. A Content-Length above it is refused before any body is read.
  static std::uint64_t bodyLimit(const WebConfig& config) {
    return std::min(config.clientMaxBodySize,
                    std::max(config.clientMaxMemoryBodySize, config.clientMaxDiskBodySize));
  }

  // "; SameSite=Lax" unless switched off, and "; Secure" over TLS.
  static std::string cookieAttributes(const std::string& sameSite, bool secure) {
    std::string attributes;
    if (!sameSite.empty()) attributes += "; SameSite=" + sameSite;
    if (secure) attributes += "; Secure";
    return attributes;
  }

  void doRead() {
    if (state_->stopping.load()) return derived().closeSocket();
    prepareRequest();
    RequestParser::Limits limits;
    limits.maxMemoryBody = state_->config.clientMaxMemoryBodySize;
    limits.maxDiskBody = state_->config.clientMaxDiskBodySize;
    limits.diskBudget = state_->diskBudget;
    limits.uploadDirectories = &state_->uploadDirectoryChoosers;
    parser_.emplace(*request_, std::move(limits), state_->temporaryDirectory);
    parser_->header_limit(static_cast<std::uint32_t>(state_->config.maxHeaderSize));
    parser_->body_limit(bodyLimit(state_->config));
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
    // The buffer left by the header holds a few hundred bytes, and each read fills it at most:
    // a large body is read in 64 kB steps instead, and the buffer shrinks again when the
    // request is complete.
    const auto remaining = parser_->content_length_remaining();
    if ((!remaining || *remaining > kLargeBodyRead) && buffer_.capacity() < kLargeBodyRead) {
      buffer_.reserve(kLargeBodyRead);
    }
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
    if (buffer_.capacity() >= kLargeBodyRead) buffer_.shrink_to_fit();
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
    if (!state_->staticFiles->load(file, *response)) return respondLocal(k404NotFound, "");
    addStaticFileHeaders(*response);
    onResponse(sequence_, response);
  }

  // What a browser should not do with the console's own pages: guess a type, show them in a
  // frame of another site, tell other sites where the operator came from.
  void addStaticFileHeaders(HttpResponse& response) const {
    const WebConfig& config = state_->config;
    if (!config.contentTypeOptions.empty()) {
      response.addHeader("X-Content-Type-Options", config.contentTypeOptions);
    }
    if (!config.contentSecurityPolicy.empty()) {
      response.addHeader("Content-Security-Policy", config.contentSecurityPolicy);
    }
    if (!config.referrerPolicy.empty()) {
      response.addHeader("Referrer-Policy", config.referrerPolicy);
    }
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
    if (!OriginCheck::allows(request_->getHeader("origin"), request_->getHeader("host"),
                             state_->config.trustedWebSocketOrigins)) {
      return respondLocal(k403Forbidden, "");
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
    if (Derived::kSecure && !state_->config.strictTransportSecurity.empty()) {
      response->addHeader("Strict-Transport-Security", state_->config.strictTransportSecurity);
    }
    closeAfterWrite_ = !keepAlive_ || response->ifCloseConnection() || state_->stopping.load();
    ResponseSerializer::Options options;
    options.close = closeAfterWrite_;
    options.keepAliveHeader = !closeAfterWrite_ && request_->version() == 10;
    options.serverHeader = state_->config.serverHeader;
    options.cookieAttributes = cookieAttributes_;
    ResponseSerializer::writeHead(*response, options, head_);
    response_ = std::move(response);
    bool withBody = request_->method() != Head &&
                    ResponseSerializer::statusHasBody(response_->statusCode()) &&
                    !response_->bodyView().empty();
    std::string_view body = withBody ? response_->bodyView() : std::string_view();
    pending_ = Pending(std::array<boost::asio::const_buffer, 2>{
        boost::asio::buffer(head_), boost::asio::buffer(body.data(), body.size())});
    writing_ = true;
    lastActivity_ = io_->ticks();
    writeSome();
  }

  // The response goes out piece by piece, so that each piece the peer takes counts as progress:
  // a peer that reads slowly keeps its connection, one that stops reading loses it after
  // idle_connection_timeout like an idle one.
  void writeSome() {
    derived().stream().async_write_some(
        pending_,
        [self = derived().shared_from_this()](boost::beast::error_code ec, std::size_t written) {
          self->onWriteSome(ec, written);
        });
  }

  void onWriteSome(boost::beast::error_code ec, std::size_t written) {
    if (ec) return onWrite(ec);
    lastActivity_ = io_->ticks();
    pending_.consume(written);
    if (boost::asio::buffer_size(pending_) == 0) return onWrite(ec);
    writeSome();
  }

  void onWrite(boost::beast::error_code ec) {
    writing_ = false;
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
  using Pending = boost::beast::buffers_suffix<std::array<boost::asio::const_buffer, 2>>;

  static constexpr std::size_t kLargeBodyRead = 64 * 1024;
  boost::beast::flat_buffer buffer_;
  std::optional<RequestParser> parser_;
  HttpRequestPtr request_;
  HttpResponsePtr response_;
  std::string head_;
  Pending pending_;
  std::string cookieAttributes_;
  static inline const std::string kNoRoute;
  const std::string* route_ = &kNoRoute;
  std::chrono::steady_clock::time_point requestComplete_;
  std::uint64_t sequence_ = 0;
  std::uint64_t lastActivity_ = 0;
  bool awaiting_ = false;
  bool keepAlive_ = true;
  bool closeAfterWrite_ = false;
  bool reading_ = false;
  bool writing_ = false;
  bool lingering_ = false;
};

}  // namespace halvor::kelo::web
