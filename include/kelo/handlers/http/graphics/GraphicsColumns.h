#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "kelo/handlers/http/graphics/GraphicsColumnPool.h"

namespace halvor::kelo {

// An allocator whose vectors leave new numbers uninitialised on resize: a decoder writes every
// entry it sizes, so zeroing them first would only write the whole output twice.
template <class T>
struct UninitialisedAllocator : std::allocator<T> {
  template <class U>
  struct rebind {
    using other = UninitialisedAllocator<U>;
  };
  UninitialisedAllocator() = default;
  template <class U>
  UninitialisedAllocator(const UninitialisedAllocator<U>&) noexcept {}
  // Default construction leaves a number as it is; any other is the usual one.
  template <class U>
  void construct(U* at) noexcept {
    ::new (static_cast<void*>(at)) U;
  }
  template <class U, class... Args>
  void construct(U* at, Args&&... args) {
    ::new (static_cast<void*>(at)) U(std::forward<Args>(args)...);
  }
  // The storage comes from the thread's kept blocks (GraphicsColumnPool), so that a large graph
  // decoded again writes into memory that is already mapped.
  T* allocate(std::size_t n) {
    if (n > static_cast<std::size_t>(-1) / sizeof(T)) throw std::bad_array_new_length();
    return static_cast<T*>(GraphicsColumnPool::take(n * sizeof(T)));
  }
  void deallocate(T* at, std::size_t n) noexcept { GraphicsColumnPool::give(at, n * sizeof(T)); }
};

template <class T, class U>
bool operator==(const UninitialisedAllocator<T>&, const UninitialisedAllocator<U>&) {
  return true;
}

// One array of a graph's decoded numbers.
template <class T>
using Column = std::vector<T, UninitialisedAllocator<T>>;

// A graph's pairs as plain numbers: two parallel arrays, entry i of each making one point. This
// is what the decoders make; the replies are written from it without a message per point.
struct PointColumns {
  Column<double> y;
  Column<double> x;

  std::size_t size() const { return y.size(); }
  // n entries of each array, their values to be written by the caller.
  void resize(std::size_t n) {
    y.resize(n);
    x.resize(n);
  }
};

// The sub-carrier groups as plain numbers, one array per member of a group.
struct SubCarrierColumns {
  Column<std::int32_t> groupIndex;
  Column<float> groupValue;
  Column<float> firstValue;
  Column<float> secondValue;

  std::size_t size() const { return groupIndex.size(); }
  void resize(std::size_t n) {
    groupIndex.resize(n);
    groupValue.resize(n);
    firstValue.resize(n);
    secondValue.resize(n);
  }
};

}  // namespace halvor::kelo
