#pragma once

#include <atomic>
#include <thread>

#include "EmbeddedHost.h"

namespace halvor::kelo::bench {

// The host's loop of an embedded benchmark server: the plug-in's timed tasks (heartbeat aging),
// about 100 passes a second on a thread of its own, as tavel-sim runs them. Started by the
// constructor, stopped and joined by the destructor.
class HostLoop {
 public:
  explicit HostLoop(EmbeddedHost& embedded);
  ~HostLoop();
  HostLoop(const HostLoop&) = delete;
  HostLoop& operator=(const HostLoop&) = delete;

 private:
  EmbeddedHost& embedded_;
  std::atomic<bool> stopping_{false};
  std::thread thread_;
};

}  // namespace halvor::kelo::bench
