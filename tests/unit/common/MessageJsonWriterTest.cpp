#include <google/protobuf/stubs/logging.h>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "FactorySample.pb.h"
#include "NestedResources.h"
#include "RandomMessages.h"
#include "halvor/protobuf/Monitoring.pb.h"
#include "halvor/protobuf/Resource.pb.h"
#include "halvor/protobuf/Settings.pb.h"
#include "kelo/common/JsonOptions.h"
#include "kelo/common/MessageJsonWriter.h"

namespace halvor::kelo {
namespace {

// What protobuf's printer makes of the message, or "throws" when it cannot print it.
std::string protobufText(const google::protobuf::Message& message) {
  try {
    return JsonOptions::protobufJson(message);
  } catch (const std::runtime_error&) {
    return "throws";
  }
}

std::string sharedText(const google::protobuf::Message& message) {
  try {
    return JsonOptions::toJson(message);
  } catch (const std::runtime_error&) {
    return "throws";
  }
}

// Every message type of the project's schema files, and the test message with a member of
// every kind (64-bit integers, bytes, plain texts, a map of numbers, a Timestamp).
std::vector<const google::protobuf::Descriptor*> everyMessageType() {
  std::vector<const google::protobuf::Descriptor*> types;
  for (const google::protobuf::FileDescriptor* file :
       {protobuf::Resource::descriptor()->file(), protobuf::Meter::descriptor()->file(),
        protobuf::Validations::descriptor()->file(),
        protobuf::test::FactorySample::descriptor()->file()}) {
    for (int i = 0; i < file->message_type_count(); ++i) {
      types.push_back(file->message_type(i));
    }
  }
  return types;
}

TEST(MessageJsonWriterTest, PrintsWhatProtobufPrintsForRandomMessagesOfEveryType) {
  // Texts with bytes that are not UTF-8 make protobuf log a complaint on each serialisation.
  const google::protobuf::LogSilencer quiet;
  test::RandomMessages random(20261123);
  const auto types = everyMessageType();
  int walked = 0;
  int total = 0;
  for (const google::protobuf::Descriptor* type : types) {
    const google::protobuf::Message* prototype =
        google::protobuf::MessageFactory::generated_factory()->GetPrototype(type);
    for (int i = 0; i < 1500; ++i) {
      std::unique_ptr<google::protobuf::Message> message(prototype->New());
      random.fill(*message);
      const std::string expected = protobufText(*message);
      ASSERT_EQ(sharedText(*message), expected) << type->full_name() << "\n"
                                                << message->DebugString();
      std::string direct;
      ++total;
      if (MessageJsonWriter::tryPrint(*message, direct)) {
        ++walked;
        ASSERT_EQ(direct, expected) << type->full_name() << "\n" << message->DebugString();
      }
    }
  }
  // The walk itself, not only the fallback, must have been compared often.
  EXPECT_GT(walked, total / 4) << walked << " of " << total;
  RecordProperty("walked", walked);
}

TEST(MessageJsonWriterTest, WrappersAtTheirDefaultPrintTheDefault) {
  protobuf::test::FactorySample sample;
  sample.mutable_text();
  sample.mutable_flag();
  sample.mutable_count();
  sample.mutable_total();
  sample.mutable_level();
  sample.mutable_blob();
  std::string out;
  ASSERT_TRUE(MessageJsonWriter::tryPrint(sample, out));
  EXPECT_EQ(out, R"({"text":"","flag":false,"count":0,"total":"0","level":0,"blob":""})");
  EXPECT_EQ(out, JsonOptions::protobufJson(sample));
}

TEST(MessageJsonWriterTest, LeavesTimestampsMapsOfNumbersAndUnnamedEnumsToProtobuf) {
  protobuf::test::FactorySample time;
  time.mutable_time()->set_seconds(1);
  protobuf::test::FactorySample counts;
  (*counts.mutable_counts())["a"] = 1;
  protobuf::test::FactorySample kind;
  kind.set_kind(static_cast<protobuf::test::FactorySample::Kind>(77));
  for (const auto* message : {&time, &counts, &kind}) {
    std::string out;
    EXPECT_FALSE(MessageJsonWriter::tryPrint(*message, out)) << message->DebugString();
    EXPECT_EQ(JsonOptions::toJson(*message), JsonOptions::protobufJson(*message));
  }
}

TEST(MessageJsonWriterTest, AMapThatReflectionGaveAKeyTwiceKeepsTheLastValue) {
  protobuf::Resource message;
  const google::protobuf::FieldDescriptor* values =
      message.GetDescriptor()->FindFieldByName("values");
  for (const char* text : {"first", "second"}) {
    google::protobuf::Message& entry = *message.GetReflection()->AddMessage(&message, values);
    const auto* type = entry.GetDescriptor();
    entry.GetReflection()->SetString(&entry, type->map_key(), "k");
    auto& value = static_cast<protobuf::ResourceValue&>(
        *entry.GetReflection()->MutableMessage(&entry, type->map_value()));
    value.mutable_stringvalue()->set_value(text);
  }
  std::string out;
  ASSERT_TRUE(MessageJsonWriter::tryPrint(message, out));
  EXPECT_EQ(out, R"({"values":{"k":{"stringValue":"second"}}})");
  EXPECT_EQ(out, JsonOptions::protobufJson(message));
}

// A meter's reading is a Resource three messages down; nested that deep it must come out as
// protobuf's printer makes it, or fail as that printer fails.
TEST(MessageJsonWriterTest, DeeplyNestedReadingsInAMeterListPrintOrFailAsProtobufDoes) {
  using Through = test::NestedResources::Through;
  for (int depth : {1, 5, 13, 14, 20, 31, 32, 40}) {
    for (const Through through : {Through::Lists, Through::Maps, Through::Both}) {
      protobuf::MeterCollectionList list;
      protobuf::Meter& meter = *list.add_collections()->add_groups()->add_meters();
      *meter.mutable_value() = test::NestedResources::deep(depth, through);
      EXPECT_EQ(sharedText(list), protobufText(list)) << depth;
    }
  }
}

TEST(MessageJsonWriterTest, NestingDeeperThanTheLimitIsLeftToProtobuf) {
  protobuf::ResourceValue value;
  protobuf::ResourceValue* inner = &value;
  for (int level = 0; level <= MessageJsonWriter::kMaxNesting; ++level) {
    inner = inner->add_listvalue();
  }
  std::string out;
  EXPECT_FALSE(MessageJsonWriter::tryPrint(value, out));
  EXPECT_EQ(sharedText(value), protobufText(value));
}

TEST(MessageJsonWriterTest, EmptyMessageIsAnEmptyObject) {
  std::string out;
  ASSERT_TRUE(MessageJsonWriter::tryPrint(protobuf::MeterGroup(), out));
  EXPECT_EQ(out, "{}");
}

}  // namespace
}  // namespace halvor::kelo
