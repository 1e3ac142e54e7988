#pragma once

#include <cstdint>
#include <initializer_list>
#include <random>
#include <string>
#include <vector>

#include "tavelabi/Resource.h"
#include "tavelabi/ResourceValue.h"

namespace halvor::kelo::test {

// Hand-made byte blocks in the channels' little-endian layout.
using Bytes = std::vector<std::uint8_t>;

inline void put16(Bytes& block, std::uint16_t value) {
  block.push_back(static_cast<std::uint8_t>(value & 0xFFU));
  block.push_back(static_cast<std::uint8_t>(value >> 8U));
}

inline void put32(Bytes& block, std::uint32_t value) {
  for (unsigned shift = 0; shift < 32; shift += 8) {
    block.push_back(static_cast<std::uint8_t>((value >> shift) & 0xFFU));
  }
}

// `size` random bytes.
inline Bytes randomBlock(std::mt19937& random, std::size_t size) {
  std::uniform_int_distribution<int> byte(0, 255);
  Bytes block(size);
  for (std::uint8_t& b : block) b = static_cast<std::uint8_t>(byte(random));
  return block;
}

inline Bytes words16(std::initializer_list<std::uint16_t> words) {
  Bytes block;
  for (std::uint16_t word : words) put16(block, word);
  return block;
}

inline Bytes words32(std::initializer_list<std::uint32_t> words) {
  Bytes block;
  for (std::uint32_t word : words) put32(block, word);
  return block;
}

inline tavelabi::ResourceValue byteArray(const Bytes& block) {
  tavelabi::ResourceValue value;
  value.setByteArray(block);
  return value;
}

// A channel's answer with the block under "value".
inline tavelabi::Resource channel(const Bytes& block) {
  return tavelabi::Resource("value", byteArray(block));
}

inline std::string graphicsPath(const std::string& channelName) {
  return "/system/graphics/" + channelName;
}

}  // namespace halvor::kelo::test
