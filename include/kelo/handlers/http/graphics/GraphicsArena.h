#pragma once

#include <google/protobuf/arena.h>

namespace halvor::kelo {

// The memory of one graph while it is made and printed: a graph of thousands of points is
// thousands of small messages, which an arena hands out from a few large blocks and frees at
// once, where the heap would take a call each way for every one of them. One per request or
// push, on the stack of its thread.
class GraphicsArena {
 public:
  GraphicsArena() : arena_(options()) {}

  // A fresh message of type M that lives as long as this arena.
  template <class M>
  M& make() {
    return *google::protobuf::Arena::CreateMessage<M>(&arena_);
  }

 private:
  static google::protobuf::ArenaOptions options() {
    google::protobuf::ArenaOptions options;
    options.start_block_size = 64 * 1024;
    options.max_block_size = 1024 * 1024;
    return options;
  }

  google::protobuf::Arena arena_;
};

}  // namespace halvor::kelo
