#pragma once

#include <cstdint>
#include <vector>

#include "tavelabi/ResourceValue.h"

namespace halvor::sim {

// Builds a byte block in the byte order of the host's graphics channels: little-endian, the
// first byte the least significant, as the plug-in's reader takes them.
class ByteBlockWriter {
 public:
  void put8(std::uint8_t value) { bytes_.push_back(value); }
  void put16(std::uint16_t value);
  void put32(std::uint32_t value);
  void putSigned16(std::int16_t value) { put16(static_cast<std::uint16_t>(value)); }
  void putSigned32(std::int32_t value) { put32(static_cast<std::uint32_t>(value)); }

  const std::vector<std::uint8_t>& bytes() const { return bytes_; }
  // The block as a host byte array.
  tavelabi::ResourceValue value() const;

 private:
  std::vector<std::uint8_t> bytes_;
};

}  // namespace halvor::sim
