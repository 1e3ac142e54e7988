// The client side of the meter fan-out benchmark: N subscribers of one meter group through
// "/1/ws/meters/group" and one heartbeat socket on "/1/ws/ping" (all share the address
// 127.0.0.1, so one ping keeps every subscriber pushable), all in one process on one thread with
// Beast. The first frame of each subscriber is empty; every later one is a Meter whose value is
// the steady-clock time of its change in microseconds. The client records the latency of every
// frame and, per subscriber and meter, that the stamps only grow (no change twice, none out of
// order).
//
// Usage: bench-monitoring-meter-client --port P --clients N --group PATH [--session S]
//        [--quiet-seconds Q]
// Prints "subscribed N" once every first frame arrived, and a summary when no frame has come for
// Q seconds (default 4) after the first one, or when every subscriber failed or was closed.
#include <algorithm>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/websocket.hpp>
#include <cctype>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "halvor/protobuf/Monitoring.pb.h"

namespace beast = boost::beast;
namespace websocket = beast::websocket;
namespace asio = boost::asio;
using tcp = asio::ip::tcp;
using Clock = std::chrono::steady_clock;

namespace {

struct Totals {
  std::size_t subscribed = 0;
  std::size_t failed = 0;
  std::size_t closed = 0;
  std::size_t frames = 0;
  std::size_t undecodable = 0;
  std::size_t repeatedOrOld = 0;
  std::vector<float> latencyMs;
  std::vector<std::size_t> framesPerClient;
  Clock::time_point lastFrame{};
};

std::int64_t nowUs() {
  return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now().time_since_epoch())
      .count();
}

class Subscriber : public std::enable_shared_from_this<Subscriber> {
 public:
  Subscriber(asio::io_context& io, Totals& totals, std::size_t index, std::string target,
             std::string cookie, std::function<void()> onReady)
      : ws_(io),
        totals_(totals),
        index_(index),
        target_(std::move(target)),
        cookie_(std::move(cookie)),
        onReady_(std::move(onReady)) {}

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
      ++totals_.closed;
      return;
    }
    const std::int64_t received = nowUs();
    if (!first_) {
      first_ = true;
      ++totals_.subscribed;
      if (onReady_) onReady_();
    } else {
      record(received);
    }
    buffer_.consume(buffer_.size());
    read();
  }

  void record(std::int64_t received) {
    halvor::protobuf::Meter meter;
    const auto data = buffer_.data();
    if (!ws_.got_binary() || !meter.ParseFromArray(data.data(), static_cast<int>(data.size())) ||
        meter.value().values().count("value") == 0) {
      ++totals_.undecodable;
      return;
    }
    const auto sent =
        static_cast<std::int64_t>(meter.value().values().at("value").doublevalue().value());
    totals_.latencyMs.push_back(static_cast<float>((received - sent) / 1e3));
    ++totals_.frames;
    ++totals_.framesPerClient[index_];
    totals_.lastFrame = Clock::now();
    std::int64_t& last = lastStamp_[meter.path().value()];
    if (sent <= last) ++totals_.repeatedOrOld;
    last = sent;
  }

  void fail(beast::error_code ec, const char* what) {
    if (totals_.failed++ == 0)
      std::cerr << "first failure: " << what << ": " << ec.message() << "\n";
    if (onReady_) onReady_();  // the next wave does not wait for a connection that failed
  }

  websocket::stream<beast::tcp_stream> ws_;
  beast::flat_buffer buffer_;
  Totals& totals_;
  std::size_t index_;
  std::string target_;
  std::string cookie_;
  std::function<void()> onReady_;
  bool first_ = false;
  std::map<std::string, std::int64_t> lastStamp_;  // per meter path
  const std::string ping_ = "ping";
};

double percentile(std::vector<float>& values, double p) {
  if (values.empty()) return 0;
  const std::size_t at = std::min(values.size() - 1, static_cast<std::size_t>(p * values.size()));
  std::nth_element(values.begin(), values.begin() + static_cast<long>(at), values.end());
  return values[at];
}

std::string urlEncoded(const std::string& text) {
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

}  // namespace

int main(int argc, char** argv) {
  int port = 0;
  int clients = 0;
  int quietSeconds = 4;
  std::string group;
  std::string session = "bench-session";
  for (int i = 1; i + 1 < argc; i += 2) {
    const std::string option = argv[i];
    if (option == "--port")
      port = std::atoi(argv[i + 1]);
    else if (option == "--clients")
      clients = std::atoi(argv[i + 1]);
    else if (option == "--group")
      group = argv[i + 1];
    else if (option == "--session")
      session = argv[i + 1];
    else if (option == "--quiet-seconds")
      quietSeconds = std::atoi(argv[i + 1]);
  }
  if (port == 0 || clients <= 0 || group.empty()) {
    std::cerr << "usage: bench-monitoring-meter-client --port P --clients N --group PATH "
                 "[--session S] [--quiet-seconds Q]\n";
    return 2;
  }

  asio::io_context io;
  Totals totals;
  totals.framesPerClient.assign(static_cast<std::size_t>(clients), 0);
  totals.latencyMs.reserve(static_cast<std::size_t>(clients) * 20000);
  const auto endpoints = tcp::resolver(io).resolve("127.0.0.1", std::to_string(port));
  const std::string cookie = "SessionID=" + session;
  const std::string target = "/1/ws/meters/group?path=" + urlEncoded(group);

  // The ping socket is not a subscriber: it counts into its own totals.
  Totals pingTotals;
  pingTotals.framesPerClient.assign(1, 0);
  auto ping = std::make_shared<Subscriber>(io, pingTotals, 0, "/1/ws/ping", cookie, nullptr);
  ping->start(endpoints);

  // Connect in waves so that the listen backlog is not overrun.
  std::vector<std::shared_ptr<Subscriber>> subscribers;
  std::size_t started = 0;
  bool announced = false;
  std::function<void()> startMore = [&] {
    while (started < static_cast<std::size_t>(clients) &&
           started < totals.subscribed + totals.failed + 100) {
      auto subscriber =
          std::make_shared<Subscriber>(io, totals, started, target, cookie, [&] { startMore(); });
      subscriber->start(endpoints);
      subscribers.push_back(subscriber);
      ++started;
    }
  };
  startMore();

  asio::steady_timer timer(io);
  auto lastPing = Clock::now();
  std::function<void(beast::error_code)> tick = [&](beast::error_code) {
    if (Clock::now() - lastPing >= std::chrono::seconds(1)) {
      ping->sendPing();
      lastPing = Clock::now();
    }
    if (!announced && totals.subscribed + totals.failed >= static_cast<std::size_t>(clients)) {
      announced = true;
      std::cout << "subscribed " << totals.subscribed << " failed " << totals.failed << std::endl;
    }
    // Done when the frames have stopped, or when no subscriber is left to wait for.
    const bool quiet =
        totals.frames > 0 && Clock::now() - totals.lastFrame > std::chrono::seconds(quietSeconds);
    const bool nobody = announced && totals.subscribed <= totals.closed;
    if (quiet || nobody) {
      io.stop();
      return;
    }
    timer.expires_after(std::chrono::milliseconds(100));
    timer.async_wait(tick);
  };
  timer.expires_after(std::chrono::milliseconds(100));
  timer.async_wait(tick);
  io.run();

  const std::size_t live = totals.subscribed - std::min(totals.subscribed, totals.closed);
  std::vector<std::size_t> perClient = totals.framesPerClient;
  std::sort(perClient.begin(), perClient.end());
  std::vector<float> latencies = totals.latencyMs;
  const double p50 = percentile(latencies, 0.50);
  const double p99 = percentile(latencies, 0.99);
  const double max = latencies.empty() ? 0 : *std::max_element(latencies.begin(), latencies.end());
  std::cout << "clients " << clients << " subscribed " << totals.subscribed << " live " << live
            << " frames_received " << totals.frames << " per_client_min " << perClient.front()
            << " per_client_max " << perClient.back() << " repeated_or_old " << totals.repeatedOrOld
            << " undecodable " << totals.undecodable << " p50_ms " << p50 << " p99_ms " << p99
            << " max_ms " << max << std::endl;
  return 0;
}
