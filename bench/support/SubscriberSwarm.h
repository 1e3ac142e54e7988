#pragma once

// The client side that the WebSocket fan-out benchmarks share: many subscribers of one target in
// one process on one thread with Beast, plus one heartbeat socket on "/1/ws/ping". Every socket
// comes from 127.0.0.1, so the one ping a second keeps every subscriber pushable. Subscribers
// connect in waves of 100, so that the server's listen backlog is not overrun.

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace halvor::bench {

using Clock = std::chrono::steady_clock;

struct SwarmOptions {
  int port = 0;
  std::size_t clients = 0;
  std::string target;   // e.g. "/1/ws/resource?path=%2Fbench%2Ffanout"
  std::string session;  // sent as the cookie "SessionID"
};

// What the swarm counts itself; frames are counted by the benchmark's own handler.
struct SwarmCounts {
  std::size_t subscribed = 0;  // first frame received
  std::size_t failed = 0;      // connect or handshake failed
  std::size_t closed = 0;      // a read ended after the subscription
};

class SubscriberSwarm {
 public:
  // Every frame after a subscriber's first: its index, bytes, whether binary, time of receipt.
  using FrameHandler = std::function<void(std::size_t subscriber, std::string_view bytes,
                                          bool binary, Clock::time_point received)>;
  // Asked every 100 ms; true ends the run.
  using Finished = std::function<bool(const SwarmCounts& counts)>;

  // Connects, prints "subscribed N failed F" once every subscriber is connected or failed, hands
  // the frames to onFrame and returns when finished says so.
  static SwarmCounts run(const SwarmOptions& options, const FrameHandler& onFrame,
                         const Finished& finished);

  // The value below which the fraction p of values lie (reorders values).
  static double percentile(std::vector<float>& values, double p);
  static std::string urlEncoded(const std::string& text);
};

}  // namespace halvor::bench
