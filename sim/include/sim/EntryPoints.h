#pragma once

// The entry points that the host looks up with dlsym in a plug-in library. Their declarations
// with C linkage live in the host interface (tavelabi/PluginEntryPoints.h), which plug-ins
// include; this header adds the symbol names the loader asks for.

#include "tavelabi/PluginEntryPoints.h"

namespace halvor::sim {

using CreateEntryPoint = tavelabi::CreateFunction;
using ProduceEntryPoint = tavelabi::ProduceFunction;
using ConsumeEntryPoint = tavelabi::ConsumeFunction;

inline constexpr const char* kCreateSymbol = "create";
inline constexpr const char* kProduceSymbol = "produce";
inline constexpr const char* kConsumeSymbol = "consume";

}  // namespace halvor::sim
