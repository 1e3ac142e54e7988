#include "SubscriberSwarm.h"

#include <algorithm>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/websocket.hpp>
#include <cctype>
#include <iostream>
#include <memory>
#include <utility>

namespace halvor::bench {

namespace {

namespace beast = boost::beast;
namespace websocket = beast::websocket;
namespace asio = boost::asio;
using tcp = asio::ip::tcp;

constexpr std::size_t kWave = 100;

class Subscriber : public std::enable_shared_from_this<Subscriber> {
 public:
  Subscriber(asio::io_context& io, SwarmCounts& counts, std::size_t index, std::string target,
             std::string cookie, const SubscriberSwarm::FrameHandler* onFrame,
             std::function<void()> onSettled)
      : ws_(io),
        counts_(counts),
        index_(index),
        target_(std::move(target)),
        cookie_(std::move(cookie)),
        onFrame_(onFrame),
        onSettled_(std::move(onSettled)) {}

  void start(const tcp::resolver::results_type& endpoints) {
    beast::get_lowest_layer(ws_).expires_after(std::chrono::seconds(60));
    beast::get_lowest_layer(ws_).async_connect(
        endpoints, [self = shared_from_this()](beast::error_code ec, const tcp::endpoint&) {
          self->onConnect(ec);
        });
  }

  void sendPing() {
    ws_.text(true);
    ws_.async_write(asio::buffer(ping_),
                    [self = shared_from_this()](beast::error_code, std::size_t) {});
  }

 private:
  void onConnect(beast::error_code ec) {
    if (ec) return fail(ec, "connect");
    beast::get_lowest_layer(ws_).expires_never();
    ws_.set_option(websocket::stream_base::timeout::suggested(beast::role_type::client));
    ws_.set_option(
        websocket::stream_base::decorator([cookie = cookie_](websocket::request_type& req) {
          req.set(beast::http::field::cookie, cookie);
        }));
    ws_.async_handshake("127.0.0.1", target_, [self = shared_from_this()](beast::error_code e) {
      if (e) return self->fail(e, "handshake");
      self->read();
    });
  }

  void read() {
    ws_.async_read(buffer_, [self = shared_from_this()](beast::error_code ec, std::size_t) {
      self->onRead(ec);
    });
  }

  void onRead(beast::error_code ec) {
    if (ec) {
      ++counts_.closed;
      return;
    }
    const Clock::time_point received = Clock::now();
    if (!subscribed_) {
      // The first frame tells that the subscription stands; its content is the endpoint's.
      subscribed_ = true;
      ++counts_.subscribed;
      if (onSettled_) onSettled_();
    } else if (onFrame_ != nullptr) {
      const auto data = buffer_.data();
      (*onFrame_)(index_, std::string_view(static_cast<const char*>(data.data()), data.size()),
                  ws_.got_binary(), received);
    }
    buffer_.consume(buffer_.size());
    read();
  }

  void fail(beast::error_code ec, const char* what) {
    if (counts_.failed++ == 0) {
      std::cerr << "first failure: " << what << ": " << ec.message() << "\n";
    }
    if (onSettled_) onSettled_();  // the next wave does not wait for a connection that failed
  }

  websocket::stream<beast::tcp_stream> ws_;
  beast::flat_buffer buffer_;
  SwarmCounts& counts_;
  std::size_t index_;
  std::string target_;
  std::string cookie_;
  const SubscriberSwarm::FrameHandler* onFrame_;
  std::function<void()> onSettled_;
  bool subscribed_ = false;
  const std::string ping_ = "ping";
};

}  // namespace

SwarmCounts SubscriberSwarm::run(const SwarmOptions& options, const FrameHandler& onFrame,
                                 const Finished& finished) {
  asio::io_context io;
  SwarmCounts counts;
  const auto endpoints = tcp::resolver(io).resolve("127.0.0.1", std::to_string(options.port));
  const std::string cookie = "SessionID=" + options.session;

  // The ping socket is not a subscriber: it counts into counts of its own.
  SwarmCounts pingCounts;
  auto ping =
      std::make_shared<Subscriber>(io, pingCounts, 0, "/1/ws/ping", cookie, nullptr, nullptr);
  ping->start(endpoints);

  std::vector<std::shared_ptr<Subscriber>> subscribers;
  std::function<void()> startMore = [&] {
    while (subscribers.size() < options.clients &&
           subscribers.size() < counts.subscribed + counts.failed + kWave) {
      auto subscriber = std::make_shared<Subscriber>(io, counts, subscribers.size(), options.target,
                                                     cookie, &onFrame, [&] { startMore(); });
      subscriber->start(endpoints);
      subscribers.push_back(subscriber);
    }
  };
  startMore();

  asio::steady_timer timer(io);
  auto lastPing = Clock::now();
  bool announced = false;
  std::function<void(beast::error_code)> tick = [&](beast::error_code) {
    if (Clock::now() - lastPing >= std::chrono::seconds(1)) {
      ping->sendPing();
      lastPing = Clock::now();
    }
    if (!announced && counts.subscribed + counts.failed >= options.clients) {
      announced = true;
      std::cout << "subscribed " << counts.subscribed << " failed " << counts.failed << std::endl;
    }
    if (finished(counts)) {
      io.stop();
      return;
    }
    timer.expires_after(std::chrono::milliseconds(100));
    timer.async_wait(tick);
  };
  timer.expires_after(std::chrono::milliseconds(100));
  timer.async_wait(tick);
  io.run();
  return counts;
}

double SubscriberSwarm::percentile(std::vector<float>& values, double p) {
  if (values.empty()) return 0;
  const std::size_t at = std::min(values.size() - 1, static_cast<std::size_t>(p * values.size()));
  std::nth_element(values.begin(), values.begin() + static_cast<long>(at), values.end());
  return values[at];
}

std::string SubscriberSwarm::urlEncoded(const std::string& text) {
  static const char* const hex = "0123456789ABCDEF";
  std::string out;
  for (const unsigned char c : text) {
    if (std::isalnum(c) || c == '-' || c == '_' || c == '.' || c == '~') {
      out += static_cast<char>(c);
    } else {
      out += '%';
      out += hex[c >> 4];
      out += hex[c & 15];
    }
  }
  return out;
}

}  // namespace halvor::bench
