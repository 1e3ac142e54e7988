#pragma once

#include <cstdint>
#include <vector>

namespace halvor::qvector {

// A cursor over a byte vector that the caller keeps alive for the reader's life. Reads are
// little-endian; a read past the end throws std::out_of_range and leaves the cursor unchanged.
class ByteVectorReader {
 public:
  explicit ByteVectorReader(const std::vector<uint8_t>& bytes);

  uint8_t readUint8();
  uint16_t readUint16();
  uint32_t readUint32();
  int16_t readSint16();
  int32_t readSint32();

  unsigned long remainingBytes() const;
  // A position past the end throws std::out_of_range; the end itself is allowed.
  void setReadPosition(unsigned long position);

 private:
  const std::vector<uint8_t>& bytes_;
  unsigned long position_ = 0;
};

}  // namespace halvor::qvector
