// The client side of the spectrum fan-out benchmark: N subscribers of "/1/ws/graphics/spectrum"
// (bench/support/SubscriberSwarm). Every frame after a subscriber's first is a Spectrum whose
// "centerFrequency" holds the steady-clock time of its change in microseconds. The client reads
// only what it needs from the wire form (the stamp and the number of trace points, without
// building the points), records the latency of every frame and, per subscriber, that the stamps
// only grow (no change twice, none out of order) and that each trace holds the expected points.
//
// Usage: bench-graphics-spectrum-client --port P --clients N [--points P] [--session S]
//        [--quiet-seconds Q]
// Prints "subscribed N" once every first frame arrived, and a summary when no frame has come for
// Q seconds (default 4) after the first one, or when every subscriber failed or was closed.
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ClientArguments.h"
#include "SubscriberSwarm.h"
#include "SwarmFigures.h"

using halvor::bench::Clock;
using halvor::bench::SubscriberSwarm;
using halvor::bench::SwarmFigures;

namespace {

// Field numbers of halvor.protobuf.Spectrum (proto/halvor/protobuf/Graphics.proto).
constexpr std::uint32_t kSpectrumPoints = 3;
constexpr std::uint32_t kCenterFrequency = 4;

struct Totals {
  std::size_t frames = 0;
  std::size_t undecodable = 0;
  std::size_t repeatedOrOld = 0;
  std::size_t wrongPoints = 0;
  std::vector<float> latencyMs;
  std::vector<std::size_t> framesPerClient;
  std::vector<std::int64_t> lastStamp;
  Clock::time_point lastFrame{};
};

// A minimal reader of protobuf's wire form: varints, and the fields of one message level.
class WireReader {
 public:
  explicit WireReader(std::string_view bytes) : bytes_(bytes) {}
  bool done() const { return at_ >= bytes_.size(); }
  std::optional<std::uint64_t> varint() {
    std::uint64_t value = 0;
    for (int shift = 0; shift < 64 && at_ < bytes_.size(); shift += 7) {
      const auto byte = static_cast<unsigned char>(bytes_[at_++]);
      value |= static_cast<std::uint64_t>(byte & 0x7F) << shift;
      if ((byte & 0x80) == 0) return value;
    }
    return std::nullopt;
  }
  std::optional<std::string_view> lengthDelimited() {
    const auto length = varint();
    if (!length || *length > bytes_.size() - at_) return std::nullopt;
    const std::string_view field = bytes_.substr(at_, *length);
    at_ += *length;
    return field;
  }
  std::optional<double> fixed64() {
    if (bytes_.size() - at_ < 8) return std::nullopt;
    double value = 0;
    std::memcpy(&value, bytes_.data() + at_, 8);  // little-endian on this machine, as the wire
    at_ += 8;
    return value;
  }

 private:
  std::string_view bytes_;
  std::size_t at_ = 0;
};

// The stamp and the number of trace points of a Spectrum, or nullopt for bytes that are not one.
std::optional<std::pair<std::int64_t, std::size_t>> stampAndPoints(std::string_view bytes) {
  WireReader reader(bytes);
  std::optional<double> stamp;
  std::size_t points = 0;
  while (!reader.done()) {
    const auto key = reader.varint();
    if (!key || (*key & 7) != 2) return std::nullopt;  // every member is a message
    const auto field = reader.lengthDelimited();
    if (!field) return std::nullopt;
    if ((*key >> 3) == kSpectrumPoints) ++points;
    if ((*key >> 3) == kCenterFrequency) {
      WireReader wrapper(*field);
      const auto wrapperKey = wrapper.varint();
      if (!wrapperKey || *wrapperKey != ((1 << 3) | 1)) return std::nullopt;
      stamp = wrapper.fixed64();
    }
  }
  if (!stamp) return std::nullopt;
  return std::make_pair(static_cast<std::int64_t>(*stamp), points);
}

void record(Totals& totals, std::size_t client, std::string_view bytes, bool binary,
            Clock::time_point received, std::size_t expectedPoints) {
  const auto decoded = binary ? stampAndPoints(bytes) : std::nullopt;
  if (!decoded) {
    ++totals.undecodable;
    return;
  }
  const auto [sent, points] = *decoded;
  totals.latencyMs.push_back(
      static_cast<float>((SwarmFigures::microsecondsOf(received) - sent) / 1e3));
  ++totals.frames;
  ++totals.framesPerClient[client];
  totals.lastFrame = Clock::now();
  if (points != expectedPoints) ++totals.wrongPoints;
  std::int64_t& last = totals.lastStamp[client];
  if (sent <= last) ++totals.repeatedOrOld;
  last = sent;
}

}  // namespace

int main(int argc, char** argv) {
  halvor::bench::ClientArguments arguments;
  std::size_t points = 8192;
  const bool parsed = halvor::bench::ClientArguments::parse(
      argc, argv,
      {{"--points",
        [&](const std::string& value) {
          points = static_cast<std::size_t>(std::atoi(value.c_str()));
        }}},
      arguments);
  if (!parsed) {
    std::cerr << "usage: bench-graphics-spectrum-client --port P --clients N [--points P] "
                 "[--session S] [--quiet-seconds Q]\n";
    return 2;
  }
  halvor::bench::SwarmOptions& options = arguments.swarm;
  options.target = "/1/ws/graphics/spectrum";
  Totals totals;
  totals.framesPerClient.assign(options.clients, 0);
  totals.lastStamp.assign(options.clients, 0);
  totals.latencyMs.reserve(options.clients * 2000);
  const halvor::bench::SwarmCounts counts = SubscriberSwarm::run(
      options,
      [&](std::size_t client, std::string_view bytes, bool binary, Clock::time_point received) {
        record(totals, client, bytes, binary, received, points);
      },
      [&](const halvor::bench::SwarmCounts& swarm) {
        return SwarmFigures::quietOrGone(swarm, options.clients, totals.frames, totals.lastFrame,
                                         arguments.quietSeconds);
      });
  SwarmFigures::printHead(std::cout, arguments.clients, counts, totals.frames,
                          totals.framesPerClient);
  std::cout << " repeated_or_old " << totals.repeatedOrOld << " wrong_points " << totals.wrongPoints
            << " undecodable " << totals.undecodable;
  SwarmFigures::printLatency(std::cout, totals.latencyMs);
  return 0;
}
