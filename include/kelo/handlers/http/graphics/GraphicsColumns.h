#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace halvor::kelo {

// A graph's pairs as plain numbers: two parallel arrays, entry i of each making one point. This
// is what the decoders make; the replies are written from it without a message per point.
struct PointColumns {
  std::vector<double> y;
  std::vector<double> x;

  std::size_t size() const { return y.size(); }
  // n entries of each array, their values to be written by the caller.
  void resize(std::size_t n) {
    y.resize(n);
    x.resize(n);
  }
};

// The sub-carrier groups as plain numbers, one array per member of a group.
struct SubCarrierColumns {
  std::vector<std::int32_t> groupIndex;
  std::vector<float> groupValue;
  std::vector<float> firstValue;
  std::vector<float> secondValue;

  std::size_t size() const { return groupIndex.size(); }
  void resize(std::size_t n) {
    groupIndex.resize(n);
    groupValue.resize(n);
    firstValue.resize(n);
    secondValue.resize(n);
  }
};

}  // namespace halvor::kelo
