#include "sim/models/ByteBlockWriter.h"

namespace halvor::sim {

void ByteBlockWriter::put16(std::uint16_t value) {
  bytes_.push_back(static_cast<std::uint8_t>(value & 0xFFU));
  bytes_.push_back(static_cast<std::uint8_t>(value >> 8U));
}

void ByteBlockWriter::put32(std::uint32_t value) {
  for (unsigned shift = 0; shift < 32; shift += 8) {
    bytes_.push_back(static_cast<std::uint8_t>((value >> shift) & 0xFFU));
  }
}

tavelabi::ResourceValue ByteBlockWriter::value() const {
  tavelabi::ResourceValue value;
  value.setByteArray(bytes_);
  return value;
}

}  // namespace halvor::sim
