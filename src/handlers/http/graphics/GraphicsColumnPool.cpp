#include "kelo/handlers/http/graphics/GraphicsColumnPool.h"

#include <array>
#include <new>

namespace halvor::kelo {

namespace {

struct Kept {
  void* block = nullptr;
  std::size_t bytes = 0;
};

// One thread's kept blocks; given back to the heap when the thread ends.
struct ThreadBlocks {
  std::array<Kept, GraphicsColumnPool::kBlocks> kept{};

  ThreadBlocks() = default;
  ThreadBlocks(const ThreadBlocks&) = delete;
  ThreadBlocks& operator=(const ThreadBlocks&) = delete;
  ~ThreadBlocks() {
    for (Kept& one : kept) ::operator delete(one.block);
  }
};

ThreadBlocks& threadBlocks() {
  thread_local ThreadBlocks blocks;
  return blocks;
}

bool kept(std::size_t bytes) {
  return bytes >= GraphicsColumnPool::kSmallest && bytes <= GraphicsColumnPool::kLargest;
}

}  // namespace

void* GraphicsColumnPool::take(std::size_t bytes) {
  if (kept(bytes)) {
    // The smallest kept block that holds `bytes`.
    Kept* best = nullptr;
    for (Kept& one : threadBlocks().kept) {
      if (one.block != nullptr && one.bytes >= bytes &&
          (best == nullptr || one.bytes < best->bytes)) {
        best = &one;
      }
    }
    if (best != nullptr) {
      void* block = best->block;
      *best = Kept{};
      return block;
    }
  }
  return ::operator new(bytes);
}

void GraphicsColumnPool::give(void* block, std::size_t bytes) noexcept {
  if (block == nullptr) return;
  if (kept(bytes)) {
    // An empty place, or else the place of the smallest kept block if this one is larger.
    Kept* place = nullptr;
    for (Kept& one : threadBlocks().kept) {
      if (one.block == nullptr) {
        place = &one;
        break;
      }
      if (one.bytes < bytes && (place == nullptr || one.bytes < place->bytes)) place = &one;
    }
    if (place != nullptr) {
      ::operator delete(place->block);
      *place = Kept{block, bytes};
      return;
    }
  }
  ::operator delete(block);
}

}  // namespace halvor::kelo
