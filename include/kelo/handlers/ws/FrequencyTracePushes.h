#pragma once

#include <string>

#include "kelo/handlers/http/graphics/FrequencyTraceHelperClass.h"

namespace halvor::kelo {

// The binary form of a spectrum push, shared between the clients of one change. Every client's
// push still checks its session and reads the four channels afresh; when the blocks and the
// scale it read are those of the push this thread wrote last, the bytes of that push are the
// bytes of this one, and only they are copied. One rendering per thread, kept by the thread, so
// that no two threads share it.
class FrequencyTracePushes {
 public:
  FrequencyTracePushes() = delete;

  // SpectrumHelperClass::wire(spectrum), from this thread's last rendering where it is the same.
  static void render(const SpectrumHelperClass::Decoded& spectrum, std::string& message);
};

}  // namespace halvor::kelo
