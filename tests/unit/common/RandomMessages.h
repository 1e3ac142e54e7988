#pragma once

#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>

namespace halvor::kelo::test {

// Random messages of any type, filled by reflection: each member set or not, repeated members
// and maps of a few elements, texts over all of ASCII, some UTF-8 and a byte that is not UTF-8,
// numbers of every magnitude with the extreme and non-finite ones, enum numbers with and without
// a name, nested messages (wrappers, Timestamp and the project's own) a few levels deep. For the
// tests that hold the JSON writers to protobuf's printer.
class RandomMessages {
 public:
  explicit RandomMessages(unsigned seed) : random(seed) {}

  void fill(google::protobuf::Message& message, int depth = 0) {
    const google::protobuf::Descriptor& descriptor = *message.GetDescriptor();
    const google::protobuf::Reflection& reflection = *message.GetReflection();
    for (int i = 0; i < descriptor.field_count(); ++i) {
      const google::protobuf::FieldDescriptor& field = *descriptor.field(i);
      if (below(2) == 0) continue;
      if (field.cpp_type() == google::protobuf::FieldDescriptor::CPPTYPE_MESSAGE && depth >= 4) {
        continue;
      }
      if (field.is_map()) {
        const int count = below(4);
        for (int j = 0; j < count; ++j) {
          google::protobuf::Message& entry = *reflection.AddMessage(&message, &field);
          const google::protobuf::Descriptor& entryType = *field.message_type();
          set(entry, *entryType.map_key(), depth + 1);
          set(entry, *entryType.map_value(), depth + 1);
        }
      } else if (field.is_repeated()) {
        const int count = below(4);
        for (int j = 0; j < count; ++j) add(message, field, depth);
      } else {
        set(message, field, depth);
      }
    }
  }

  int below(int n) { return std::uniform_int_distribution<int>(0, n - 1)(random); }

  std::string text() {
    static const char* const kPieces[] = {"",
                                          "a",
                                          "value",
                                          "/meters/main",
                                          "\"",
                                          "\\",
                                          "<",
                                          ">",
                                          "'",
                                          "&",
                                          "=",
                                          "\n",
                                          "\t",
                                          "\x01",
                                          "\x7f",
                                          "é",
                                          "日本",
                                          " ",
                                          "{}",
                                          "/",
                                          "\xe2\x80\xa8",  // U+2028, which JSON printers may escape
                                          "\xff"};         // not UTF-8 at all
    std::string out;
    const int pieces = below(5);
    for (int i = 0; i < pieces; ++i) {
      if (below(3) != 0) {
        out += static_cast<char>(0x20 + below(0x5f));  // any printable ASCII character
      } else {
        out += kPieces[below(sizeof(kPieces) / sizeof(kPieces[0]))];
      }
    }
    return out;
  }

  double number64() {
    switch (below(10)) {
      case 0:
        return 0.0;
      case 1:
        return -0.0;
      case 2:
        return std::numeric_limits<double>::infinity();
      case 3:
        return std::numeric_limits<double>::quiet_NaN();
      case 4:
        return std::numeric_limits<double>::denorm_min();
      case 5:
        return 0.1;
      default:
        return std::ldexp(std::uniform_real_distribution<double>(-1, 1)(random), below(400) - 200);
    }
  }

  float number32() {
    switch (below(10)) {
      case 0:
        return 0.0f;
      case 1:
        return -0.0f;
      case 2:
        return -std::numeric_limits<float>::infinity();
      case 3:
        return std::numeric_limits<float>::denorm_min();
      case 4:
        return std::numeric_limits<float>::max();
      case 5:
        return std::numeric_limits<float>::quiet_NaN();
      default:
        return std::ldexp(std::uniform_real_distribution<float>(-1, 1)(random), below(80) - 40);
    }
  }

  std::int64_t integer() {
    switch (below(6)) {
      case 0:
        return 0;
      case 1:
        return std::numeric_limits<std::int64_t>::min();
      case 2:
        return std::numeric_limits<std::int64_t>::max();
      default:
        return std::uniform_int_distribution<std::int64_t>(-100000, 100000)(random);
    }
  }

 private:
  using Field = google::protobuf::FieldDescriptor;

  int enumNumber(const Field& field) {
    const google::protobuf::EnumDescriptor& type = *field.enum_type();
    if (below(8) == 0) return 1000 + below(10);  // a number without a name
    return type.value(below(type.value_count()))->number();
  }

  void set(google::protobuf::Message& message, const Field& field, int depth) {
    const google::protobuf::Reflection& r = *message.GetReflection();
    switch (field.cpp_type()) {
      case Field::CPPTYPE_INT32:
        r.SetInt32(&message, &field, static_cast<std::int32_t>(integer()));
        break;
      case Field::CPPTYPE_INT64:
        r.SetInt64(&message, &field, integer());
        break;
      case Field::CPPTYPE_UINT32:
        r.SetUInt32(&message, &field, static_cast<std::uint32_t>(integer()));
        break;
      case Field::CPPTYPE_UINT64:
        r.SetUInt64(&message, &field, static_cast<std::uint64_t>(integer()));
        break;
      case Field::CPPTYPE_DOUBLE:
        r.SetDouble(&message, &field, number64());
        break;
      case Field::CPPTYPE_FLOAT:
        r.SetFloat(&message, &field, number32());
        break;
      case Field::CPPTYPE_BOOL:
        r.SetBool(&message, &field, below(2) == 0);
        break;
      case Field::CPPTYPE_ENUM:
        r.SetEnumValue(&message, &field, enumNumber(field));
        break;
      case Field::CPPTYPE_STRING:
        r.SetString(&message, &field, text());
        break;
      case Field::CPPTYPE_MESSAGE:
        fillNested(*r.MutableMessage(&message, &field), depth + 1);
        break;
    }
  }

  void add(google::protobuf::Message& message, const Field& field, int depth) {
    const google::protobuf::Reflection& r = *message.GetReflection();
    switch (field.cpp_type()) {
      case Field::CPPTYPE_INT32:
        r.AddInt32(&message, &field, static_cast<std::int32_t>(integer()));
        break;
      case Field::CPPTYPE_INT64:
        r.AddInt64(&message, &field, integer());
        break;
      case Field::CPPTYPE_UINT32:
        r.AddUInt32(&message, &field, static_cast<std::uint32_t>(integer()));
        break;
      case Field::CPPTYPE_UINT64:
        r.AddUInt64(&message, &field, static_cast<std::uint64_t>(integer()));
        break;
      case Field::CPPTYPE_DOUBLE:
        r.AddDouble(&message, &field, number64());
        break;
      case Field::CPPTYPE_FLOAT:
        r.AddFloat(&message, &field, number32());
        break;
      case Field::CPPTYPE_BOOL:
        r.AddBool(&message, &field, below(2) == 0);
        break;
      case Field::CPPTYPE_ENUM:
        r.AddEnumValue(&message, &field, enumNumber(field));
        break;
      case Field::CPPTYPE_STRING:
        r.AddString(&message, &field, text());
        break;
      case Field::CPPTYPE_MESSAGE:
        fillNested(*r.AddMessage(&message, &field), depth + 1);
        break;
    }
  }

  // A Timestamp that protobuf can print most of the time; wrappers at their default now and
  // then, as a set wrapper with an unset value prints the default.
  void fillNested(google::protobuf::Message& message, int depth) {
    if (message.GetDescriptor()->full_name() == "google.protobuf.Timestamp") {
      const google::protobuf::Reflection& r = *message.GetReflection();
      const google::protobuf::Descriptor& type = *message.GetDescriptor();
      r.SetInt64(&message, type.FindFieldByName("seconds"),
                 std::uniform_int_distribution<std::int64_t>(0, 4102444800)(random));
      r.SetInt32(&message, type.FindFieldByName("nanos"), below(3) == 0 ? 0 : below(1000000000));
      return;
    }
    fill(message, depth);
  }

  std::mt19937 random;
};

}  // namespace halvor::kelo::test
