#include "sim/RandomText.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <mutex>
#include <random>

namespace halvor::sim {

namespace {

// The random device reads the kernel's generator; one shared device, used under a lock
// because its call operator is not promised to be thread safe.
std::array<std::uint8_t, 16> randomBytes() {
  static std::mutex mutex;
  static std::random_device device;
  std::array<std::uint8_t, 16> bytes{};
  std::lock_guard lock(mutex);
  for (std::size_t i = 0; i < bytes.size(); i += 4) {
    std::uint32_t word = device();
    for (std::size_t j = 0; j < 4; ++j) bytes[i + j] = static_cast<std::uint8_t>(word >> (8 * j));
  }
  return bytes;
}

std::string hex(const std::array<std::uint8_t, 16>& bytes) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  text.reserve(bytes.size() * 2);
  for (std::uint8_t byte : bytes) {
    text.push_back(kDigits[byte >> 4]);
    text.push_back(kDigits[byte & 0x0f]);
  }
  return text;
}

}  // namespace

std::string RandomText::sessionId() { return hex(randomBytes()); }

std::string RandomText::guid() {
  std::string digits = hex(randomBytes());
  return digits.substr(0, 8) + "-" + digits.substr(8, 4) + "-" + digits.substr(12, 4) + "-" +
         digits.substr(16, 4) + "-" + digits.substr(20, 12);
}

std::string RandomText::isoTimeNow() {
  std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  std::tm utc{};
  gmtime_r(&now, &utc);
  char text[32];
  std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &utc);
  return text;
}

}  // namespace halvor::sim
