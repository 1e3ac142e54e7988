#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>

#include "kelo/common/JsonOptions.h"
#include "kelo/common/MessageJsonWriter.h"
#include "kelo/common/PointJsonWriter.h"

namespace halvor::kelo {
namespace {

protobuf::Point point(double y, double x) {
  protobuf::Point p;
  p.mutable_y()->set_value(y);
  p.mutable_x()->set_value(x);
  return p;
}

TEST(PointJsonWriterTest, PrintsYThenXAsBareNumbers) {
  protobuf::Constellation constellation;
  *constellation.add_points() = point(-0.5, 1);
  *constellation.add_points() = point(0, 0);
  EXPECT_EQ(JsonOptions::toJson(constellation), R"({"points":[{"y":-0.5,"x":1},{"y":0,"x":0}]})");
  EXPECT_EQ(JsonOptions::toJson(constellation), JsonOptions::protobufJson(constellation));
}

TEST(PointJsonWriterTest, AMemberThatIsNotSetIsLeftOut) {
  protobuf::Lissajous lissajous;
  lissajous.add_points()->mutable_x()->set_value(2);
  lissajous.add_points()->mutable_y()->set_value(3);
  lissajous.add_points();
  lissajous.mutable_headervalue()->set_value(7);
  EXPECT_EQ(JsonOptions::toJson(lissajous), R"({"points":[{"x":2},{"y":3},{}],"headerValue":7})");
  EXPECT_EQ(JsonOptions::toJson(lissajous), JsonOptions::protobufJson(lissajous));
}

TEST(PointJsonWriterTest, RandomSpectraPrintAsProtobufPrintsThem) {
  std::mt19937 random(7);
  std::uniform_real_distribution<double> real(-1e6, 1e6);
  std::uniform_int_distribution<int> whole(-40000, 40000);
  std::uniform_int_distribution<int> kind(0, 5);
  for (int round = 0; round < 50; ++round) {
    protobuf::Spectrum spectrum;
    for (int i = 0; i < 200; ++i) {
      protobuf::Point* p = (i % 3 == 0 ? spectrum.add_maskpoints() : spectrum.add_spectrumpoints());
      const int k = kind(random);
      if (k != 0) p->mutable_y()->set_value(k == 1 ? real(random) : whole(random));
      if (k != 5) p->mutable_x()->set_value(k == 2 ? real(random) * 1e-9 : whole(random) * 4096.0);
    }
    spectrum.mutable_centerfrequency()->set_value(98.1);
    spectrum.mutable_maxvalueunits()->set_value("dBc");
    EXPECT_EQ(JsonOptions::toJson(spectrum), JsonOptions::protobufJson(spectrum));
  }
}

TEST(PointJsonWriterTest, NonFiniteNumbersAndUnknownFieldsAreLeftToProtobuf) {
  protobuf::Point p = point(std::numeric_limits<double>::quiet_NaN(), 1);
  std::string out;
  EXPECT_FALSE(PointJsonWriter::tryPrint(p, 1, out));
  protobuf::PowerDistribution curve;
  *curve.add_points() = point(std::numeric_limits<double>::infinity(), 1);
  EXPECT_EQ(JsonOptions::toJson(curve), JsonOptions::protobufJson(curve));

  protobuf::Point unknown = point(1, 2);
  unknown.GetReflection()->MutableUnknownFields(&unknown)->AddVarint(99, 1);
  out.clear();
  EXPECT_FALSE(PointJsonWriter::tryPrint(unknown, 1, out));
  protobuf::Point unknownInWrapper = point(1, 2);
  unknownInWrapper.mutable_x()
      ->GetReflection()
      ->MutableUnknownFields(unknownInWrapper.mutable_x())
      ->AddVarint(5, 1);
  out.clear();
  EXPECT_FALSE(PointJsonWriter::tryPrint(unknownInWrapper, 1, out));
}

TEST(PointJsonWriterTest, PointsTooDeepAreRefused) {
  std::string out;
  EXPECT_TRUE(PointJsonWriter::tryPrint(point(1, 2), MessageJsonWriter::kMaxNesting - 1, out));
  out.clear();
  EXPECT_FALSE(PointJsonWriter::tryPrint(point(1, 2), MessageJsonWriter::kMaxNesting, out));
}

}  // namespace
}  // namespace halvor::kelo
