// Any bytes as the blocks of the graphics channels. The first byte picks the decoder, the second
// (where a decoder takes two blocks or an offset) splits the rest or gives the offset. Properties:
// a block of whole entries decodes to one element per entry, a cut-off entry throws
// std::out_of_range and nothing else, the power distribution never throws, and every value stays
// in the range its conversion allows. AddressSanitizer catches any read outside a block.
#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <vector>

#include "halvor/protobuf/Graphics.pb.h"
#include "kelo/handlers/http/graphics/GraphicsDecoders.h"

using halvor::kelo::GraphicsDecoders;
using Bytes = std::vector<std::uint8_t>;
namespace protobuf = halvor::protobuf;

namespace {

void check(bool property) {
  if (!property) abort();
}

// Runs decode; true when it finished, false when it threw std::out_of_range (anything else
// escapes and ends the run).
template <class Decode>
bool finishes(Decode&& decode) {
  try {
    decode();
    return true;
  } catch (const std::out_of_range&) {
    return false;
  }
}

void trace(const Bytes& amplitude, const Bytes& frequency) {
  google::protobuf::RepeatedPtrField<protobuf::Point> points;
  const bool done = finishes([&] { GraphicsDecoders::appendTrace(amplitude, frequency, points); });
  const std::size_t a = amplitude.size();
  const std::size_t f = frequency.size();
  if ((f >> 1) == a) {
    check(done == (a % 2 == 0));
    if (done) check(points.size() == static_cast<int>(a / 2));
  } else if (f == a) {
    check(done == (a % 4 == 0));
    if (done) check(points.size() == static_cast<int>(a / 4));
  } else {
    check(done && points.empty());
  }
  for (const protobuf::Point& p : points) {
    check(p.y().value() >= -32768 && p.y().value() <= 32767);
    check(p.x().value() >= -2147483648.0 && p.x().value() <= 2147483647.0);
  }
}

void pairs(const Bytes& block) {
  google::protobuf::RepeatedPtrField<protobuf::Point> points;
  const bool done = finishes([&] { GraphicsDecoders::appendFixedPointPairs(block, points); });
  check(done == (block.size() % 8 == 0));
  check(points.size() == static_cast<int>(block.size() / 8));
  for (const protobuf::Point& p : points) {
    check(p.x().value() >= -128.0 && p.x().value() < 128.0);
    check(p.y().value() >= -128.0 && p.y().value() < 128.0);
  }
}

void groups(const Bytes& block) {
  google::protobuf::RepeatedPtrField<protobuf::SubCarrierGroup> list;
  const bool done = finishes([&] { GraphicsDecoders::appendSubCarrierGroups(block, list); });
  check(done == (block.size() % 16 == 0));
  check(list.size() == static_cast<int>(block.size() / 16));
  for (const protobuf::SubCarrierGroup& g : list) {
    check(g.groupvalue().value() >= -327.68F && g.groupvalue().value() <= 327.67F);
    check(g.groupindex().value() >= -32768 && g.groupindex().value() <= 32767);
  }
}

void lissajousHeader(const Bytes& header) {
  protobuf::Lissajous result;
  GraphicsDecoders::readLissajousHeader(header, result);
  check(result.has_headervalue() == (header.size() >= 14));
  if (result.has_headervalue()) {
    check(result.headervalue().value() == (header[12] | (header[13] << 8)));
  }
}

void powerDistribution(const Bytes& block) {
  const auto curve = GraphicsDecoders::powerDistribution(block);
  check(curve->points_size() == (block.size() % 4 == 0 ? static_cast<int>(block.size() / 4) : 0));
  for (const protobuf::Point& p : curve->points()) {
    check(p.x().value() >= 0 && p.x().value() <= 655.35);
  }
}

template <class Decode>
void correction(const Bytes& block, Decode decode, double most) {
  std::shared_ptr<google::protobuf::Message> kept;
  int size = -1;
  double top = 0;
  const bool done = finishes([&] {
    const auto curve = decode(block);
    size = curve->points_size();
    for (int i = 0; i < size; ++i) {
      check(curve->points(i).x().value() == i);
      check(curve->points(i).y().value() >= 0);
      if (curve->points(i).y().value() > top) top = curve->points(i).y().value();
    }
  });
  check(done == (block.size() % 4 == 0));
  if (done) check(size == static_cast<int>(block.size() / 4) && top <= most);
}

void equaliser(const Bytes& block) {
  google::protobuf::RepeatedPtrField<google::protobuf::DoubleValue> responses;
  google::protobuf::RepeatedPtrField<google::protobuf::Int32Value> frequencies;
  check(finishes([&] { GraphicsDecoders::appendEqResponses(block, responses); }) ==
        (block.size() % 2 == 0));
  check(responses.size() == static_cast<int>(block.size() / 2));
  check(finishes([&] { GraphicsDecoders::appendEqFrequencies(block, frequencies); }) ==
        (block.size() % 4 == 0));
  check(frequencies.size() == static_cast<int>(block.size() / 4));
}

void audio(const Bytes& header, const Bytes& record, unsigned char offset) {
  check(finishes([&] { (void)GraphicsDecoders::audioModVectors(header, record); }) ==
        (header.size() >= 16 && record.size() >= 70));
  check(finishes([&] { (void)GraphicsDecoders::audioVector(record, offset); }) ==
        (offset + 6u <= record.size()));
  check(finishes([&] { (void)GraphicsDecoders::modulationVector(record, offset); }) ==
        (offset + 10u <= record.size()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 2) return 0;
  const std::uint8_t which = data[0];
  const std::uint8_t second = data[1];
  const Bytes rest(data + 2, data + size);
  // The split point of two-block decoders: a share of the rest given by the second byte.
  const std::size_t split = rest.size() * second / 255;
  const Bytes first(rest.begin(), rest.begin() + static_cast<std::ptrdiff_t>(split));
  const Bytes last(rest.begin() + static_cast<std::ptrdiff_t>(split), rest.end());
  switch (which % 9) {
    case 0:
      trace(first, last);
      break;
    case 1:
      pairs(rest);
      break;
    case 2:
      groups(rest);
      break;
    case 3:
      lissajousHeader(rest);
      break;
    case 4:
      powerDistribution(rest);
      break;
    case 5:
      correction(rest, GraphicsDecoders::amAmCorrection,
                 4294967295.0 * GraphicsDecoders::kAmAmScale);
      break;
    case 6:
      correction(rest, GraphicsDecoders::amPmCorrection, 360.0);
      break;
    case 7:
      equaliser(rest);
      break;
    default:
      audio(first, last, second);
      break;
  }
  return 0;
}
