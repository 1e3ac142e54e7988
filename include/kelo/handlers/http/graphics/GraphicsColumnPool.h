#pragma once

#include <cstddef>

namespace halvor::kelo {

// The storage of the decoders' large columns, kept per thread for the next decoding. A column of
// tens of thousands of numbers takes hundreds of kilobytes; malloc gives such blocks back to the
// kernel when they are freed, and the next graph of the same size then pays a page fault per
// 4 kB page to write its numbers. Each thread keeps the last few large blocks it freed (at most
// kBlocks of at most kLargest bytes) and hands them out again; small blocks go to malloc as
// usual. A block may be freed by another thread than the one that took it: it then joins that
// thread's blocks. Nothing is shared between threads, so nothing is locked.
class GraphicsColumnPool {
 public:
  GraphicsColumnPool() = delete;

  // Blocks from this size on are kept.
  static constexpr std::size_t kSmallest = 64 * 1024;
  // Blocks above this size are given back at once.
  static constexpr std::size_t kLargest = 4 * 1024 * 1024;
  // Blocks kept by one thread.
  static constexpr std::size_t kBlocks = 4;

  // A block of at least `bytes` bytes, aligned as operator new aligns.
  static void* take(std::size_t bytes);
  // Gives back a block of `bytes` bytes (the size it was taken with).
  static void give(void* block, std::size_t bytes) noexcept;
};

}  // namespace halvor::kelo
