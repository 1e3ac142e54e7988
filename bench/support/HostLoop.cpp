#include "HostLoop.h"

#include <chrono>

namespace halvor::kelo::bench {

HostLoop::HostLoop(EmbeddedHost& embedded) : embedded_(embedded) {
  thread_ = std::thread([this] {
    while (!stopping_.load()) {
      embedded_.runHostPass();
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
  });
}

HostLoop::~HostLoop() {
  stopping_ = true;
  thread_.join();
}

}  // namespace halvor::kelo::bench
