#include "tavelabi/ByteVectorReader.h"

#include <stdexcept>
#include <string>

namespace halvor::qvector {

ByteVectorReader::ByteVectorReader(const std::vector<uint8_t>& bytes) : bytes_(bytes) {}

namespace {

// Little-endian: the first byte is the least significant. Bytes are assembled with shifts, so
// nothing is read through a cast pointer.
// The bounds are checked before any byte is touched, and the cursor moves only after a read
// that fits.
uint32_t takeLittleEndian(const std::vector<uint8_t>& bytes, unsigned long& position,
                          unsigned width) {
  const unsigned long remaining = position >= bytes.size() ? 0 : bytes.size() - position;
  if (remaining < width) {
    throw std::out_of_range("ByteVectorReader: reading " + std::to_string(width) +
                            " bytes at position " + std::to_string(position) + " passes the end " +
                            std::to_string(bytes.size()));
  }
  uint32_t value = 0;
  for (unsigned i = 0; i < width; ++i) {
    value |= static_cast<uint32_t>(bytes[position + i]) << (8U * i);
  }
  position += width;
  return value;
}

}  // namespace

uint8_t ByteVectorReader::readUint8() {
  return static_cast<uint8_t>(takeLittleEndian(bytes_, position_, 1));
}

uint16_t ByteVectorReader::readUint16() {
  return static_cast<uint16_t>(takeLittleEndian(bytes_, position_, 2));
}

uint32_t ByteVectorReader::readUint32() { return takeLittleEndian(bytes_, position_, 4); }

// Two's complement reinterpretation, well defined since C++20.
int16_t ByteVectorReader::readSint16() {
  return static_cast<int16_t>(takeLittleEndian(bytes_, position_, 2));
}

int32_t ByteVectorReader::readSint32() {
  return static_cast<int32_t>(takeLittleEndian(bytes_, position_, 4));
}

unsigned long ByteVectorReader::remainingBytes() const {
  return position_ >= bytes_.size() ? 0 : bytes_.size() - position_;
}

void ByteVectorReader::setReadPosition(unsigned long position) {
  if (position > bytes_.size()) {
    throw std::out_of_range("ByteVectorReader: position " + std::to_string(position) +
                            " is past the end " + std::to_string(bytes_.size()));
  }
  position_ = position;
}

}  // namespace halvor::qvector
