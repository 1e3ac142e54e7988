#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <vector>

#include "tavelabi/ByteVectorReader.h"

namespace halvor::qvector {
namespace {

TEST(ByteVectorReaderTest, ReadsLittleEndian) {
  const std::vector<uint8_t> bytes = {0x01, 0x34, 0x12, 0x78, 0x56, 0x34, 0x12};
  ByteVectorReader reader(bytes);
  EXPECT_EQ(reader.remainingBytes(), 7U);
  EXPECT_EQ(reader.readUint8(), 0x01);
  EXPECT_EQ(reader.readUint16(), 0x1234);
  EXPECT_EQ(reader.readUint32(), 0x12345678U);
  EXPECT_EQ(reader.remainingBytes(), 0U);
}

TEST(ByteVectorReaderTest, SignedValues) {
  const std::vector<uint8_t> bytes = {0xFE, 0xFF, 0x00, 0x80, 0xFF, 0xFF, 0xFF,
                                      0xFF, 0x00, 0x00, 0x00, 0x80, 0xFF, 0x7F};
  ByteVectorReader reader(bytes);
  EXPECT_EQ(reader.readSint16(), -2);
  EXPECT_EQ(reader.readSint16(), INT16_MIN);
  EXPECT_EQ(reader.readSint32(), -1);
  EXPECT_EQ(reader.readSint32(), INT32_MIN);
  EXPECT_EQ(reader.readSint16(), INT16_MAX);
}

TEST(ByteVectorReaderTest, UnsignedHighBits) {
  const std::vector<uint8_t> bytes = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
  ByteVectorReader reader(bytes);
  EXPECT_EQ(reader.readUint32(), 0xFFFFFFFFU);
  EXPECT_EQ(reader.readUint16(), 0xFFFF);
  EXPECT_EQ(reader.readUint8(), 0xFF);
}

struct Width {
  const char* name;
  unsigned bytes;
  std::function<void(ByteVectorReader&)> read;
};

const std::vector<Width> kWidths = {
    {"readUint8", 1, [](ByteVectorReader& r) { (void)r.readUint8(); }},
    {"readUint16", 2, [](ByteVectorReader& r) { (void)r.readUint16(); }},
    {"readUint32", 4, [](ByteVectorReader& r) { (void)r.readUint32(); }},
    {"readSint16", 2, [](ByteVectorReader& r) { (void)r.readSint16(); }},
    {"readSint32", 4, [](ByteVectorReader& r) { (void)r.readSint32(); }},
};

// For each width: a read that ends exactly at the end works, one byte short throws and leaves
// the cursor where it was.
TEST(ByteVectorReaderTest, EachWidthAtAndPastTheEnd) {
  for (const Width& width : kWidths) {
    SCOPED_TRACE(width.name);
    const std::vector<uint8_t> bytes(10, 0xAB);
    ByteVectorReader reader(bytes);

    reader.setReadPosition(bytes.size() - width.bytes);
    EXPECT_NO_THROW(width.read(reader));
    EXPECT_EQ(reader.remainingBytes(), 0U);

    for (unsigned short_by = 1; short_by <= width.bytes; ++short_by) {
      reader.setReadPosition(bytes.size() - width.bytes + short_by);
      const unsigned long before = reader.remainingBytes();
      EXPECT_THROW(width.read(reader), std::out_of_range);
      EXPECT_EQ(reader.remainingBytes(), before);
    }
  }
}

TEST(ByteVectorReaderTest, EmptyVectorThrowsOnEveryRead) {
  const std::vector<uint8_t> bytes;
  ByteVectorReader reader(bytes);
  EXPECT_EQ(reader.remainingBytes(), 0U);
  for (const Width& width : kWidths) {
    EXPECT_THROW(width.read(reader), std::out_of_range) << width.name;
  }
  EXPECT_NO_THROW(reader.setReadPosition(0));
  EXPECT_THROW(reader.setReadPosition(1), std::out_of_range);
}

TEST(ByteVectorReaderTest, SetReadPosition) {
  const std::vector<uint8_t> bytes = {0x10, 0x20, 0x30, 0x40};
  ByteVectorReader reader(bytes);
  reader.setReadPosition(2);
  EXPECT_EQ(reader.remainingBytes(), 2U);
  EXPECT_EQ(reader.readUint8(), 0x30);
  reader.setReadPosition(0);
  EXPECT_EQ(reader.readUint8(), 0x10);
  reader.setReadPosition(4);  // the end itself is allowed
  EXPECT_EQ(reader.remainingBytes(), 0U);
  EXPECT_THROW(reader.setReadPosition(5), std::out_of_range);
  EXPECT_EQ(reader.remainingBytes(), 0U);
  reader.setReadPosition(1);
  EXPECT_THROW(reader.setReadPosition(static_cast<unsigned long>(-1)), std::out_of_range);
  EXPECT_EQ(reader.readUint16(), 0x3020);
}

TEST(ByteVectorReaderTest, UnalignedReads) {
  const std::vector<uint8_t> bytes = {0x00, 0x11, 0x22, 0x33, 0x44, 0x55};
  ByteVectorReader reader(bytes);
  reader.setReadPosition(1);
  EXPECT_EQ(reader.readUint32(), 0x44332211U);
  EXPECT_EQ(reader.readUint8(), 0x55);
}

}  // namespace
}  // namespace halvor::qvector
