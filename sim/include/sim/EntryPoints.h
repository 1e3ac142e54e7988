#pragma once

// The three functions with C linkage that a plug-in library exports and the host looks up with
// dlsym. A plug-in includes this header so that its definitions are checked against the types
// that the host calls them through.

#include "tavelabi/BasePlugin.h"
#include "tavelabi/ITavel.h"
#include "tavelabi/Types.h"

extern "C" {
// Builds the plug-in's one object. The host deletes it through its virtual destructor.
halvor::tavelabi::BasePlugin* create(halvor::tavelabi::ITavel* tavel);
// Called from the host's loop; true when consume has work.
bool produce(const halvor::tavelabi::TimePoint& now);
// Called from the host's loop after produce.
void consume(const halvor::tavelabi::TimePoint& now);
}

namespace halvor::sim {

using CreateEntryPoint = decltype(&::create);
using ProduceEntryPoint = decltype(&::produce);
using ConsumeEntryPoint = decltype(&::consume);

inline constexpr const char* kCreateSymbol = "create";
inline constexpr const char* kProduceSymbol = "produce";
inline constexpr const char* kConsumeSymbol = "consume";

}  // namespace halvor::sim
