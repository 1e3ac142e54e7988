#include "kelo/handlers/http/graphics/PointListWriter.h"

#include <google/protobuf/descriptor.h>
#include <google/protobuf/reflection.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <memory>
#include <stdexcept>

#include "kelo/common/JsonOptions.h"
#include "kelo/common/JsonText.h"
#include "kelo/common/MessageBytes.h"

namespace halvor::kelo {

namespace {

// A double goes on the wire as its 8 bytes, little-endian: the machine's own order.
static_assert(std::endian::native == std::endian::little,
              "a point's values are copied to the wire as the machine's own bytes");

// About the length of a point's text and the most bytes of a point's binary form (a tag and a
// length, then two wrappers of a tag, a length, the value's tag and 8 bytes each).
constexpr std::size_t kPointText = 28;
constexpr std::size_t kMostPointBytes = 24;
// The most characters of one number's text (protobuf prints at most 17 digits, a sign, a point
// and an exponent of up to 5 characters), and of one point's, with its comma.
constexpr std::size_t kMostNumberText = 32;
constexpr std::size_t kMostPointText = 1 + 5 + kMostNumberText + 5 + kMostNumberText + 1;

const google::protobuf::FieldDescriptor& fieldOf(const google::protobuf::Message& message,
                                                 int fieldNumber) {
  const google::protobuf::FieldDescriptor* field =
      message.GetDescriptor()->FindFieldByNumber(fieldNumber);
  if (field == nullptr || !field->is_repeated() ||
      field->message_type() != protobuf::Point::descriptor()) {
    throw std::logic_error("PointListWriter: field " + std::to_string(fieldNumber) + " of " +
                           message.GetDescriptor()->full_name() + " is no list of points");
  }
  return *field;
}

// One DoubleValue member of a point: its tag and length, then the value's own tag and its 8
// bytes, little-endian. A value whose bits are all zero (0.0, not -0.0) is the wrapper's default
// and leaves the wrapper empty.
char* writeWrapper(char* at, char tag, double value) {
  std::uint64_t bits = 0;
  std::memcpy(&bits, &value, sizeof(bits));
  *at++ = tag;
  if (bits == 0) {
    *at++ = 0;
    return at;
  }
  *at++ = 9;
  *at++ = 0x09;
  std::memcpy(at, &value, sizeof(value));
  return at + sizeof(value);
}

template <std::size_t N>
char* writeText(char* at, const char (&text)[N]) {
  std::memcpy(at, text, N - 1);
  return at + N - 1;
}

// A number as JsonText::appendDouble writes it; nullptr when it is not finite (or, which protobuf's
// rule never gives, its text is longer than kMostNumberText).
char* writeNumber(char* at, double value, std::string& scratch) {
  if (char* end = JsonText::tryWriteWholeNumber(value, at)) return end;
  scratch.clear();
  if (!JsonText::appendDouble(value, scratch) || scratch.size() > kMostNumberText) return nullptr;
  std::memcpy(at, scratch.data(), scratch.size());
  return at + scratch.size();
}

}  // namespace

std::string PointListWriter::json(std::initializer_list<List> lists,
                                  const google::protobuf::Message& rest) {
  std::size_t points = 0;
  for (const List& list : lists) points += list.points.size();
  std::string out;
  out.reserve(points * kPointText + 256);
  out += '{';
  bool first = true;
  // Protobuf's printer leaves an empty list out and prints the members in field order.
  for (const List& list : lists) {
    if (list.points.size() == 0) continue;
    if (!first) out += ',';
    first = false;
    out += '"';
    out += fieldOf(rest, list.fieldNumber).json_name();
    out += "\":";
    if (!tryAppendJson(list.points, out)) {
      // A number that is not finite: protobuf's printer decides its text.
      std::unique_ptr<google::protobuf::Message> whole(rest.New());
      whole->CopyFrom(rest);
      fill(lists, *whole);
      return JsonOptions::toJson(*whole);
    }
  }
  const std::string others = JsonOptions::toJson(rest);
  // "{}" when rest has no member set; else its members go in after the lists.
  if (others.size() > 2) {
    if (!first) out += ',';
    out.append(others, 1, others.size() - 2);
  }
  out += '}';
  return out;
}

std::string PointListWriter::wire(std::initializer_list<List> lists,
                                  const google::protobuf::Message& rest) {
  std::string out;
  for (const List& list : lists) {
    (void)fieldOf(rest, list.fieldNumber);
    appendWire(list.fieldNumber, list.points, out);
  }
  out += MessageBytes::of(rest);
  return out;
}

void PointListWriter::fill(std::initializer_list<List> lists, google::protobuf::Message& whole) {
  for (const List& list : lists) {
    const google::protobuf::FieldDescriptor& field = fieldOf(whole, list.fieldNumber);
    auto points =
        whole.GetReflection()->GetMutableRepeatedFieldRef<protobuf::Point>(&whole, &field);
    protobuf::Point point;
    for (std::size_t i = 0; i < list.points.size(); ++i) {
      point.mutable_y()->set_value(list.points.y[i]);
      point.mutable_x()->set_value(list.points.x[i]);
      points.Add(point);
    }
  }
}

// Each point an object with "y" and then "x", each a bare number, also when it is 0. The points
// are written a chunk at a time into a buffer on the stack, whole numbers (the spectrum's) with
// their digits directly, other numbers through JsonText::appendDouble.
bool PointListWriter::tryAppendJson(const PointColumns& points, std::string& out) {
  constexpr std::size_t kChunk = 128;
  char chunk[kChunk * kMostPointText];
  std::string number;
  out += '[';
  for (std::size_t begin = 0; begin < points.size(); begin += kChunk) {
    const std::size_t end = std::min(points.size(), begin + kChunk);
    char* at = chunk;
    for (std::size_t i = begin; i < end; ++i) {
      if (i != 0) *at++ = ',';
      at = writeText(at, "{\"y\":");
      if ((at = writeNumber(at, points.y[i], number)) == nullptr) return false;
      at = writeText(at, ",\"x\":");
      if ((at = writeNumber(at, points.x[i], number)) == nullptr) return false;
      *at++ = '}';
    }
    out.append(chunk, at);
  }
  out += ']';
  return true;
}

// Each point a length-delimited member of its field: the field's tag, the point's length, then
// y (field 1) and x (field 2). Every length fits one byte, and so does the tag of a field below
// 16, as in every graph.
void PointListWriter::appendWire(int fieldNumber, const PointColumns& points, std::string& out) {
  if (fieldNumber <= 0 || fieldNumber >= 16) {
    throw std::logic_error("PointListWriter: field numbers from 1 to 15 only");
  }
  const char tag = static_cast<char>((fieldNumber << 3) | 2);
  const std::size_t start = out.size();
  out.resize(start + points.size() * kMostPointBytes);
  char* at = out.data() + start;
  for (std::size_t i = 0; i < points.size(); ++i) {
    *at++ = tag;
    char* length = at++;
    at = writeWrapper(at, 0x0A, points.y[i]);
    at = writeWrapper(at, 0x12, points.x[i]);
    *length = static_cast<char>(at - length - 1);
  }
  out.resize(static_cast<std::size_t>(at - out.data()));
}

}  // namespace halvor::kelo
