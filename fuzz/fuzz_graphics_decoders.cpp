// Any bytes as the blocks of the graphics channels. The first byte picks the decoder, the second
// (where a decoder takes two blocks or an offset) splits the rest or gives the offset. Properties:
// every decoder gives exactly the message of the reference decoders (tests/unit/handlers/http/
// graphics/ReferenceDecoders: each entry read through a ByteVectorReader), or throws
// std::out_of_range with exactly the reference's text, having appended the same whole entries; a
// block of whole entries decodes to one element per entry; the power distribution never throws;
// every value stays in the range its conversion allows; the spectrum's JSON text and binary form
// written from the decoded numbers are protobuf's for the message. AddressSanitizer catches any
// read outside a block.
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "halvor/protobuf/Graphics.pb.h"
#include "kelo/common/JsonOptions.h"
#include "kelo/handlers/http/graphics/GraphicsDecoders.h"
#include "kelo/handlers/http/graphics/PointListWriter.h"
#include "unit/handlers/http/graphics/ReferenceDecoders.h"

using halvor::kelo::GraphicsDecoders;
using halvor::kelo::PointColumns;
using halvor::kelo::PointListWriter;
using halvor::kelo::test::ReferenceDecoders;
using Bytes = std::vector<std::uint8_t>;
namespace protobuf = halvor::protobuf;

namespace {

void check(bool property) {
  if (!property) abort();
}

// The bytes of the message that `decode` fills and the text of the std::out_of_range it threw
// ("" when it finished); anything else escapes and ends the run.
struct Outcome {
  std::string bytes;
  std::string thrown;
  bool operator==(const Outcome&) const = default;
};

template <class Message>
Outcome outcomeOf(const std::function<void(Message&)>& decode) {
  Message message;
  Outcome outcome;
  try {
    decode(message);
  } catch (const std::out_of_range& error) {
    outcome.thrown = error.what();
    if (outcome.thrown.empty()) outcome.thrown = "(empty)";
  }
  outcome.bytes = message.SerializeAsString();
  return outcome;
}

template <class Message>
Outcome sameAsReference(const std::function<void(Message&)>& mine,
                        const std::function<void(Message&)>& reference) {
  const Outcome outcome = outcomeOf<Message>(mine);
  check(outcome == outcomeOf<Message>(reference));
  return outcome;
}

template <class Message>
Message parsed(const Outcome& outcome) {
  Message message;
  check(message.ParseFromString(outcome.bytes));
  return message;
}

void trace(const Bytes& amplitude, const Bytes& frequency) {
  const Outcome outcome = sameAsReference<protobuf::Spectrum>(
      [&](protobuf::Spectrum& m) {
        GraphicsDecoders::appendTrace(amplitude, frequency, *m.mutable_spectrumpoints());
      },
      [&](protobuf::Spectrum& m) {
        ReferenceDecoders::appendTrace(amplitude, frequency, *m.mutable_spectrumpoints());
      });
  const bool done = outcome.thrown.empty();
  const auto points = parsed<protobuf::Spectrum>(outcome).spectrumpoints();
  const std::size_t a = amplitude.size();
  const std::size_t f = frequency.size();
  if ((f >> 1) == a) {
    check(done == (a % 2 == 0));
    check(points.size() == static_cast<int>(a / 2));
  } else if (f == a) {
    check(done == (a % 4 == 0));
    check(points.size() == static_cast<int>(a / 4));
  } else {
    check(done && points.empty());
  }
  for (const protobuf::Point& p : points) {
    check(p.y().value() >= -32768 && p.y().value() <= 32767);
    check(p.x().value() >= -2147483648.0 && p.x().value() <= 2147483647.0);
  }
  if (!done) return;
  // The replies written from the numbers are protobuf's text and bytes of the message.
  PointColumns columns;
  GraphicsDecoders::decodeTrace(amplitude, frequency, columns);
  protobuf::Spectrum rest;
  rest.mutable_centerfrequency()->set_value(static_cast<double>(a));
  protobuf::Spectrum whole = parsed<protobuf::Spectrum>(outcome);
  whole.MergeFrom(rest);
  check(PointListWriter::json({{protobuf::Spectrum::kSpectrumPointsFieldNumber, columns}}, rest) ==
        halvor::kelo::JsonOptions::protobufJson(whole));
  check(PointListWriter::wire({{protobuf::Spectrum::kSpectrumPointsFieldNumber, columns}}, rest) ==
        whole.SerializeAsString());
}

void pairs(const Bytes& block) {
  const Outcome outcome = sameAsReference<protobuf::Constellation>(
      [&](protobuf::Constellation& m) {
        GraphicsDecoders::appendFixedPointPairs(block, *m.mutable_points());
      },
      [&](protobuf::Constellation& m) {
        ReferenceDecoders::appendFixedPointPairs(block, *m.mutable_points());
      });
  check(outcome.thrown.empty() == (block.size() % 8 == 0));
  const auto message = parsed<protobuf::Constellation>(outcome);
  check(message.points_size() == static_cast<int>(block.size() / 8));
  for (const protobuf::Point& p : message.points()) {
    check(p.x().value() >= -128.0 && p.x().value() < 128.0);
    check(p.y().value() >= -128.0 && p.y().value() < 128.0);
  }
}

void groups(const Bytes& block) {
  const Outcome outcome = sameAsReference<protobuf::SubCarrierGroupList>(
      [&](protobuf::SubCarrierGroupList& m) {
        GraphicsDecoders::appendSubCarrierGroups(block, *m.mutable_groups());
      },
      [&](protobuf::SubCarrierGroupList& m) {
        ReferenceDecoders::appendSubCarrierGroups(block, *m.mutable_groups());
      });
  check(outcome.thrown.empty() == (block.size() % 16 == 0));
  const auto message = parsed<protobuf::SubCarrierGroupList>(outcome);
  check(message.groups_size() == static_cast<int>(block.size() / 16));
  for (const protobuf::SubCarrierGroup& g : message.groups()) {
    check(g.groupvalue().value() >= -327.68F && g.groupvalue().value() <= 327.67F);
    check(g.groupindex().value() >= -32768 && g.groupindex().value() <= 32767);
  }
}

void lissajousHeader(const Bytes& header) {
  const Outcome outcome = sameAsReference<protobuf::Lissajous>(
      [&](protobuf::Lissajous& m) { GraphicsDecoders::readLissajousHeader(header, m); },
      [&](protobuf::Lissajous& m) { ReferenceDecoders::readLissajousHeader(header, m); });
  check(outcome.thrown.empty());
  const auto result = parsed<protobuf::Lissajous>(outcome);
  check(result.has_headervalue() == (header.size() >= 14));
  if (result.has_headervalue()) {
    check(result.headervalue().value() == (header[12] | (header[13] << 8)));
  }
}

void powerDistribution(const Bytes& block) {
  const Outcome outcome = sameAsReference<protobuf::PowerDistribution>(
      [&](protobuf::PowerDistribution& m) { m = *GraphicsDecoders::powerDistribution(block); },
      [&](protobuf::PowerDistribution& m) { m = *ReferenceDecoders::powerDistribution(block); });
  check(outcome.thrown.empty());
  const auto curve = parsed<protobuf::PowerDistribution>(outcome);
  check(curve.points_size() == (block.size() % 4 == 0 ? static_cast<int>(block.size() / 4) : 0));
  for (const protobuf::Point& p : curve.points()) {
    check(p.x().value() >= 0 && p.x().value() <= 655.35);
  }
}

template <class Message>
void correction(const Bytes& block, std::shared_ptr<Message> (*mine)(const Bytes&),
                std::shared_ptr<Message> (*reference)(const Bytes&), double most) {
  const Outcome outcome = sameAsReference<Message>([&](Message& m) { m = *mine(block); },
                                                   [&](Message& m) { m = *reference(block); });
  check(outcome.thrown.empty() == (block.size() % 4 == 0));
  if (!outcome.thrown.empty()) return;
  const auto curve = parsed<Message>(outcome);
  check(curve.points_size() == static_cast<int>(block.size() / 4));
  for (int i = 0; i < curve.points_size(); ++i) {
    check(curve.points(i).x().value() == i);
    check(curve.points(i).y().value() >= 0 && curve.points(i).y().value() <= most);
  }
}

void equaliser(const Bytes& block) {
  const Outcome responses = sameAsReference<protobuf::EqFrequencyResponse>(
      [&](protobuf::EqFrequencyResponse& m) {
        GraphicsDecoders::appendEqResponses(block, *m.mutable_responses());
      },
      [&](protobuf::EqFrequencyResponse& m) {
        ReferenceDecoders::appendEqResponses(block, *m.mutable_responses());
      });
  check(responses.thrown.empty() == (block.size() % 2 == 0));
  check(parsed<protobuf::EqFrequencyResponse>(responses).responses_size() ==
        static_cast<int>(block.size() / 2));
  const Outcome frequencies = sameAsReference<protobuf::EqFrequencyResponse>(
      [&](protobuf::EqFrequencyResponse& m) {
        GraphicsDecoders::appendEqFrequencies(block, *m.mutable_frequencies());
      },
      [&](protobuf::EqFrequencyResponse& m) {
        ReferenceDecoders::appendEqFrequencies(block, *m.mutable_frequencies());
      });
  check(frequencies.thrown.empty() == (block.size() % 4 == 0));
  check(parsed<protobuf::EqFrequencyResponse>(frequencies).frequencies_size() ==
        static_cast<int>(block.size() / 4));
}

void audio(const Bytes& header, const Bytes& record, unsigned char offset) {
  const Outcome vectors = sameAsReference<protobuf::AudioModVectors>(
      [&](protobuf::AudioModVectors& m) { m = *GraphicsDecoders::audioModVectors(header, record); },
      [&](protobuf::AudioModVectors& m) {
        m = *ReferenceDecoders::audioModVectors(header, record);
      });
  check(vectors.thrown.empty() == (header.size() >= 16 && record.size() >= 70));
  const Outcome audioVector = sameAsReference<protobuf::AudioVector>(
      [&](protobuf::AudioVector& m) { m = *GraphicsDecoders::audioVector(record, offset); },
      [&](protobuf::AudioVector& m) { m = *ReferenceDecoders::audioVector(record, offset); });
  check(audioVector.thrown.empty() == (offset + 6u <= record.size()));
  const Outcome modulationVector = sameAsReference<protobuf::ModulationVector>(
      [&](protobuf::ModulationVector& m) {
        m = *GraphicsDecoders::modulationVector(record, offset);
      },
      [&](protobuf::ModulationVector& m) {
        m = *ReferenceDecoders::modulationVector(record, offset);
      });
  check(modulationVector.thrown.empty() == (offset + 10u <= record.size()));
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
      correction<protobuf::AmAmCorrection>(rest, GraphicsDecoders::amAmCorrection,
                                           ReferenceDecoders::amAmCorrection,
                                           4294967295.0 * GraphicsDecoders::kAmAmScale);
      break;
    case 6:
      correction<protobuf::AmPmCorrection>(rest, GraphicsDecoders::amPmCorrection,
                                           ReferenceDecoders::amPmCorrection, 360.0);
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
