#include <gtest/gtest.h>

#include <stdexcept>

#include "kelo/handlers/http/graphics/EqFrequencyResponseHelperClass.h"
#include "kelo/handlers/http/graphics/GetEqFrequencyResponseHandler.h"
#include "kelo/handlers/http/graphics/GraphicsDecoders.h"
#include "support/HandlerTest.h"
#include "unit/handlers/http/graphics/GraphicsBlocks.h"

namespace halvor::kelo::test {
namespace {

TEST(EqResponsesDecodeTest, ASignedWordOfMinus250IsMinus2Point5) {
  google::protobuf::RepeatedPtrField<google::protobuf::DoubleValue> responses;
  GraphicsDecoders::appendEqResponses(words16({static_cast<std::uint16_t>(-250), 65535, 12345}),
                                      responses);
  ASSERT_EQ(responses.size(), 3);
  EXPECT_EQ(responses[0].value(), -2.5);
  EXPECT_EQ(responses[1].value(), -0.01);
  EXPECT_EQ(responses[2].value(), 123.45);
}

TEST(EqFrequenciesDecodeTest, SignedWordsNotScaled) {
  google::protobuf::RepeatedPtrField<google::protobuf::Int32Value> frequencies;
  GraphicsDecoders::appendEqFrequencies(words32({4294967295U, 20000}), frequencies);
  ASSERT_EQ(frequencies.size(), 2);
  EXPECT_EQ(frequencies[0].value(), -1);
  EXPECT_EQ(frequencies[1].value(), 20000);
}

TEST(EqFrequenciesDecodeTest, ACutOffWordThrows) {
  google::protobuf::RepeatedPtrField<google::protobuf::Int32Value> frequencies;
  EXPECT_THROW(GraphicsDecoders::appendEqFrequencies(Bytes(3, 0), frequencies), std::out_of_range);
}

class GetEqFrequencyResponseTest : public HandlerTest<GetEqFrequencyResponseHandler> {
 protected:
  web::HttpResponsePtr get() {
    return call(host, web::Get, "/1/api/graphics/eqFrequencyResponse", "", "", "c");
  }
};

TEST_F(GetEqFrequencyResponseTest, ResponsesAreReadFirstFrequenciesPrintedFirst) {
  host.answer(graphicsPath("exLmsFilterFreqDomain"),
              channel(words16({static_cast<std::uint16_t>(-250), 100, 5})));
  host.answer(graphicsPath("exLmsFreqVector"), channel(words32({-1000U, 1000})));
  const web::HttpResponsePtr resp = get();
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  // The two lists need not be as long as each other.
  EXPECT_EQ(resp->body(), R"({"frequencies":[-1000,1000],"responses":[-2.5,1,0.05]})");
  const std::vector<tavelabi::ResourceAction> actions = host.actions();
  ASSERT_EQ(actions.size(), 2u);
  EXPECT_EQ(actions[0].path, "/system/graphics/exLmsFilterFreqDomain");
  EXPECT_EQ(actions[1].path, "/system/graphics/exLmsFreqVector");
  for (const tavelabi::ResourceAction& action : actions) {
    EXPECT_FALSE(action.resource.values.at("byPassSessionActivityTimerUpdate").getBoolValue());
  }
}

TEST_F(GetEqFrequencyResponseTest, EmptyBlocksAreAnEmptyMessage) {
  host.answer(graphicsPath("exLmsFilterFreqDomain"), channel({}));
  host.answer(graphicsPath("exLmsFreqVector"), channel({}));
  EXPECT_EQ(get()->body(), "{}");
}

}  // namespace
}  // namespace halvor::kelo::test

namespace halvor::kelo::test {
namespace {

TEST(EqFrequenciesDecodeTest, ACutOffWordAddsNoElement) {
  google::protobuf::RepeatedPtrField<google::protobuf::Int32Value> frequencies;
  EXPECT_THROW(GraphicsDecoders::appendEqFrequencies(Bytes(6, 0), frequencies), std::out_of_range);
  EXPECT_EQ(frequencies.size(), 1);
  google::protobuf::RepeatedPtrField<google::protobuf::DoubleValue> responses;
  EXPECT_THROW(GraphicsDecoders::appendEqResponses(Bytes(5, 0), responses), std::out_of_range);
  EXPECT_EQ(responses.size(), 2);
}

}  // namespace
}  // namespace halvor::kelo::test
