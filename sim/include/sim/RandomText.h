#pragma once

#include <string>

namespace halvor::sim {

// Identifiers that must not be guessable: session identifiers and user guids.
class RandomText {
 public:
  // 32 lower-case hex digits from the system's random device.
  static std::string sessionId();
  // A guid in the 8-4-4-4-12 hex form.
  static std::string guid();
  // Current UTC time as "2026-01-31T12:34:56Z".
  static std::string isoTimeNow();
};

}  // namespace halvor::sim
