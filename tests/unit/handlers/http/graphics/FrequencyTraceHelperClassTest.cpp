#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "kelo/handlers/http/graphics/GetFrequencyTraceHandler.h"
#include "kelo/handlers/http/graphics/GraphicsDecoders.h"
#include "kelo/handlers/http/graphics/FrequencyTraceHelperClass.h"
#include "support/HandlerTest.h"
#include "support/RecordingHost.h"
#include "support/Requests.h"
#include "tavelabi/Exceptions.h"
#include "unit/handlers/http/graphics/GraphicsBlocks.h"

namespace halvor::kelo::test {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;
using Points = google::protobuf::RepeatedPtrField<protobuf::Point>;

struct XY {
  double x;
  double y;
  bool operator==(const XY&) const = default;
};

std::vector<XY> pairsOf(const Points& points) {
  std::vector<XY> pairs;
  for (const protobuf::Point& point : points)
    pairs.push_back({point.x().value(), point.y().value()});
  return pairs;
}

std::vector<XY> traceOf(const Bytes& amplitude, const Bytes& frequency) {
  Points points;
  GraphicsDecoders::appendTrace(amplitude, frequency, points);
  return pairsOf(points);
}

Resource amplitudeAnswer(const Bytes& block) {
  Resource answer = channel(block);
  answer.values["centerFrequency"] = ResourceValue(98.1);
  answer.values["centerFrequencyUnits"] = ResourceValue(std::string("MHz"));
  answer.values["frequencySpan"] = ResourceValue(0.4);
  answer.values["minValue"] = ResourceValue(-100.0);
  answer.values["minValueUnits"] = ResourceValue(std::string("dBc"));
  answer.values["maxValue"] = ResourceValue(0.0);
  answer.values["maxValueUnits"] = ResourceValue(std::string("dB"));
  return answer;
}

TEST(SpectrumTraceTest, TwoEmptyBlocksAreTheNarrowFormAndMakeNoPoints) {
  EXPECT_TRUE(traceOf({}, {}).empty());
}

TEST(SpectrumTraceTest, AFrequencyBlockTwiceTheAmplitudesHoldsTwoByteAmplitudes) {
  const Bytes amplitude = words16({1, 0xFFFF, 32767, 0x8000});
  const Bytes frequency = words32({100, 200, 300, 400});
  ASSERT_EQ(amplitude.size(), 8u);
  ASSERT_EQ(frequency.size(), 16u);
  EXPECT_EQ(traceOf(amplitude, frequency),
            (std::vector<XY>{{100, 1}, {200, -1}, {300, 32767}, {400, -32768}}));
}

TEST(SpectrumTraceTest, BlocksOfEqualLengthKeepOnlyTheLowHalfOfEachAmplitudeWord) {
  const Bytes amplitude = words32({65535, 0x12345, 7, 0xFFFF8000});
  const Bytes frequency = words32({1, 2, 3, 4});
  EXPECT_EQ(traceOf(amplitude, frequency),
            (std::vector<XY>{{1, -1}, {2, 0x2345}, {3, 7}, {4, -32768}}));
}

TEST(SpectrumTraceTest, AFrequencyBlockOneByteLongerStillMatchesTheNarrowForm) {
  const Bytes amplitude = words16({5, 6, 7, 8});
  Bytes frequency = words32({10, 20, 30, 40});
  frequency.push_back(0xAB);
  ASSERT_EQ(frequency.size(), 17u);
  EXPECT_EQ(traceOf(amplitude, frequency), (std::vector<XY>{{10, 5}, {20, 6}, {30, 7}, {40, 8}}));
}

TEST(SpectrumTraceTest, LengthsOfNeitherFormMakeNoPointsAndNoError) {
  EXPECT_TRUE(traceOf(words16({1, 2, 3, 4}), Bytes(24, 0)).empty());
  EXPECT_TRUE(traceOf(Bytes(3, 0), Bytes(9, 0)).empty());
}

TEST(SpectrumTraceTest, AFrequencyWordOfTwoToThe31OrMoreComesOutNegative) {
  EXPECT_EQ(traceOf(words16({0, 0}), words32({4294967295U, 2147483648U})),
            (std::vector<XY>{{-1, 0}, {-2147483648.0, 0}}));
}

TEST(SpectrumTraceTest, AnAmplitudeEntryCutOffByTheBlockEndThrowsAfterTheWholeEntries) {
  // 3 amplitude bytes beside 6 frequency bytes are the narrow form: one whole entry, then half.
  Points points;
  EXPECT_THROW(GraphicsDecoders::appendTrace(Bytes{1, 0, 9}, Bytes{5, 0, 0, 0, 0, 0}, points),
               std::out_of_range);
  EXPECT_EQ(pairsOf(points), (std::vector<XY>{{5, 1}}));
  // Equal lengths of 6: one 4-byte entry, then 2 bytes that cannot be a word.
  points.Clear();
  EXPECT_THROW(GraphicsDecoders::appendTrace(Bytes(6, 0), Bytes(6, 0), points), std::out_of_range);
  EXPECT_EQ(points.size(), 1);
}

class GetSpectrumTest : public HandlerTest<GetSpectrumHandler> {
 protected:
  void answerTrace(const Bytes& amplitude, const Bytes& frequency) {
    host.answer(graphicsPath("exSpectrumAmplitude"), amplitudeAnswer(amplitude));
    host.answer(graphicsPath("exSpectrumFrequency"), channel(frequency));
  }
  void answerMask(const Bytes& amplitude, const Bytes& frequency) {
    host.answer(graphicsPath("exSpectrumMaskAmplitude"), channel(amplitude));
    host.answer(graphicsPath("exSpectrumMaskFrequency"), channel(frequency));
  }
  web::HttpResponsePtr get() {
    return call(host, web::Get, "/1/api/graphics/spectrum", "", "", "client");
  }
  protobuf::Spectrum spectrum(bool byPass) {
    protobuf::Spectrum result;
    SpectrumHelperClass::getSpectrum(makeRequest(web::Get, "/1/api/graphics/spectrum", ""), &host,
                                     &info, "client", result, byPass);
    return result;
  }
};

TEST_F(GetSpectrumTest, EmptyBlocksStillGiveTheScaleAsJsonWith200) {
  answerTrace({}, {});
  answerMask({}, {});
  const web::HttpResponsePtr resp = get();
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->contentType(), web::CT_APPLICATION_JSON);
  EXPECT_EQ(resp->body(),
            R"({"centerFrequency":98.1,"minValue":-100,"maxValue":0,"frequencySpan":0.4,)"
            R"("centerFrequencyUnits":"MHz","minValueUnits":"dBc","maxValueUnits":"dB"})");
}

TEST_F(GetSpectrumTest, TraceAndMaskArePrintedAsPointsWithYBeforeX) {
  answerTrace(words16({0, 2}), words32({10, 20}));
  answerMask(words32({65535}), words32({30}));
  EXPECT_EQ(get()->body(),
            R"({"maskPoints":[{"y":-1,"x":30}],"spectrumPoints":[{"y":0,"x":10},{"y":2,"x":20}],)"
            R"("centerFrequency":98.1,"minValue":-100,"maxValue":0,"frequencySpan":0.4,)"
            R"("centerFrequencyUnits":"MHz","minValueUnits":"dBc","maxValueUnits":"dB"})");
}

TEST_F(GetSpectrumTest, TheMasksFormIsDecidedOnItsOwnLengths) {
  answerTrace(words16({1, 2}), words32({10, 20}));     // narrow
  answerMask(words32({3, 65535}), words32({30, 40}));  // wide
  const protobuf::Spectrum result = spectrum(false);
  EXPECT_EQ(pairsOf(result.spectrumpoints()), (std::vector<XY>{{10, 1}, {20, 2}}));
  EXPECT_EQ(pairsOf(result.maskpoints()), (std::vector<XY>{{30, 3}, {40, -1}}));
}

TEST_F(GetSpectrumTest, ATraceOfNeitherFormLeavesTheMaskAndScaleStanding) {
  answerTrace(words16({1, 2, 3, 4}), Bytes(24, 0));
  answerMask(words16({7}), words32({70}));
  const protobuf::Spectrum result = spectrum(false);
  EXPECT_EQ(result.spectrumpoints_size(), 0);
  EXPECT_EQ(pairsOf(result.maskpoints()), (std::vector<XY>{{70, 7}}));
  EXPECT_EQ(result.centerfrequency().value(), 98.1);
}

TEST_F(GetSpectrumTest, FourReadsInOrderEachCarryingOnlyTheActivityFlag) {
  answerTrace({}, {});
  answerMask({}, {});
  for (bool byPass : {false, true}) {
    host.clearActions();
    (void)spectrum(byPass);
    const std::vector<tavelabi::ResourceAction> actions = host.actions();
    ASSERT_EQ(actions.size(), 4u);
    const std::vector<std::string> paths = {
        graphicsPath("exSpectrumAmplitude"), graphicsPath("exSpectrumFrequency"),
        graphicsPath("exSpectrumMaskAmplitude"), graphicsPath("exSpectrumMaskFrequency")};
    for (std::size_t i = 0; i < actions.size(); ++i) {
      EXPECT_EQ(actions[i].action, CCRUD::Read);
      EXPECT_EQ(actions[i].path, paths[i]);
      EXPECT_EQ(actions[i].sessionId, "client");
      ASSERT_EQ(actions[i].resource.values.size(), 1u);
      EXPECT_EQ(actions[i].resource.values.at("byPassSessionActivityTimerUpdate").getBoolValue(),
                byPass);
    }
  }
}

TEST_F(GetSpectrumTest, TheRestRouteCountsAsActivity) {
  answerTrace({}, {});
  answerMask({}, {});
  (void)get();
  for (const tavelabi::ResourceAction& action : host.actions()) {
    EXPECT_FALSE(action.resource.values.at("byPassSessionActivityTimerUpdate").getBoolValue());
  }
}

TEST_F(GetSpectrumTest, TheScaleIsTakenFromTheAmplitudeChannelAlone) {
  answerTrace({}, {});
  // The other channels carry scale keys of their own; they are not used.
  Resource frequency = amplitudeAnswer({});
  frequency.values["centerFrequency"] = ResourceValue(1.0);
  host.answer(graphicsPath("exSpectrumFrequency"), frequency);
  answerMask({}, {});
  EXPECT_EQ(spectrum(false).centerfrequency().value(), 98.1);
}

TEST_F(GetSpectrumTest, AMissingScaleKeyIsMapAt) {
  Resource amplitude = amplitudeAnswer({});
  amplitude.values.erase("maxValueUnits");
  host.answer(graphicsPath("exSpectrumAmplitude"), amplitude);
  host.answer(graphicsPath("exSpectrumFrequency"), channel({}));
  answerMask({}, {});
  try {
    (void)spectrum(false);
    FAIL() << "no exception";
  } catch (const std::out_of_range& error) {
    EXPECT_STREQ(error.what(), "map::at");
  }
}

TEST_F(GetSpectrumTest, AMissingValueIsMapAt) {
  answerTrace({}, {});
  host.answer(graphicsPath("exSpectrumMaskAmplitude"), Resource("header", byteArray({})));
  host.answer(graphicsPath("exSpectrumMaskFrequency"), channel({}));
  EXPECT_THROW((void)spectrum(false), std::out_of_range);
}

TEST_F(GetSpectrumTest, HostFailuresPassThrough) {
  host.fail(graphicsPath("exSpectrumAmplitude"),
            [] { throw tavelabi::NonExistentSessionException("no session"); });
  EXPECT_THROW((void)get(), tavelabi::NonExistentSessionException);
}

}  // namespace
}  // namespace halvor::kelo::test
