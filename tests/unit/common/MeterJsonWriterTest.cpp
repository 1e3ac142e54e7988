#include <google/protobuf/stubs/logging.h>
#include <gtest/gtest.h>

#include <string>

#include "RandomMessages.h"
#include "halvor/protobuf/Monitoring.pb.h"
#include "kelo/common/JsonOptions.h"
#include "kelo/common/MeterJsonWriter.h"

namespace halvor::kelo {
namespace {

protobuf::Meter forwardPower() {
  protobuf::Meter meter;
  meter.mutable_guid()->set_value("fwd");
  meter.mutable_path()->set_value("/meters/main/rf/forwardPower");
  protobuf::ResourceValue& reading = (*meter.mutable_value()->mutable_values())["value"];
  reading.mutable_doublevalue()->set_value(1250.5);
  reading.set_type(protobuf::ResourceValue::DOUBLE);
  meter.mutable_units()->set_value("W");
  meter.mutable_min()->set_value(0);
  meter.mutable_max()->set_value(2500);
  meter.mutable_label()->set_value("Forward <power>");
  meter.mutable_digitstodisplay()->set_value(1);
  meter.mutable_device()->mutable_name()->set_value("PA");
  meter.mutable_device()->mutable_guid()->set_value("PA1");
  return meter;
}

TEST(MeterJsonWriterTest, PrintsAMeterGroupAsProtobufDoes) {
  protobuf::MeterCollectionList list;
  protobuf::MeterCollection& collection = *list.add_collections();
  collection.mutable_path()->set_value("/meters/main/list");
  protobuf::MeterGroup& group = *collection.add_groups();
  group.mutable_label()->set_value("RF");
  *group.add_meters() = forwardPower();
  group.add_meters()->mutable_device();  // an unreadable meter: only its empty device
  std::string out;
  ASSERT_TRUE(MeterJsonWriter::tryPrint(list, 0, out));
  EXPECT_EQ(out,
            R"({"collections":[{"path":"/meters/main/list","groups":[{"label":"RF","meters":[)"
            R"({"guid":"fwd","path":"/meters/main/rf/forwardPower","value":{"values":{"value":)"
            R"({"doubleValue":1250.5,"type":"DOUBLE"}}},"units":"W","min":0,"max":2500,)"
            R"("label":"Forward \u003cpower\u003e","digitsToDisplay":1,)"
            R"("device":{"guid":"PA1","name":"PA"}},{"device":{}}]}]}]})");
  EXPECT_EQ(out, JsonOptions::protobufJson(list));
}

TEST(MeterJsonWriterTest, RandomMeterTreesPrintAsProtobufPrintsThem) {
  const google::protobuf::LogSilencer quiet;
  test::RandomMessages random(4711);
  int walked = 0;
  const int total = 3000;
  for (int i = 0; i < total; ++i) {
    protobuf::MeterCollectionList list;
    random.fill(list);
    std::string expected;
    try {
      expected = JsonOptions::protobufJson(list);
    } catch (const std::runtime_error&) {
      expected = "throws";
    }
    std::string out;
    if (MeterJsonWriter::tryPrint(list, 0, out)) {
      ++walked;
      ASSERT_EQ(out, expected) << list.DebugString();
    }
  }
  EXPECT_GT(walked, total / 4) << walked;
}

TEST(MeterJsonWriterTest, LeavesNonAsciiTextsAndNonFiniteNumbersToProtobuf) {
  protobuf::Meter text = forwardPower();
  text.mutable_label()->set_value("Forward \u2192 antenna");
  protobuf::Meter number = forwardPower();
  number.mutable_max()->set_value(std::numeric_limits<double>::infinity());
  for (const protobuf::Meter* meter : {&text, &number}) {
    std::string out;
    EXPECT_FALSE(MeterJsonWriter::tryPrint(*meter, 0, out));
    EXPECT_EQ(JsonOptions::toJson(*meter), JsonOptions::protobufJson(*meter));
  }
}

}  // namespace
}  // namespace halvor::kelo
