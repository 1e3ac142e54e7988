#pragma once

#include "tavelabi/BasePlugin.h"
#include "tavelabi/ITavel.h"
#include "tavelabi/Types.h"

// The three entry points of a plug-in library, with C linkage. `create` makes the plug-in's one
// object; the host deletes it through its virtual destructor. There is no destroy function.
extern "C" {
halvor::tavelabi::BasePlugin* create(halvor::tavelabi::ITavel* tavel);
bool produce(const halvor::tavelabi::TimePoint& now);
void consume(const halvor::tavelabi::TimePoint& now);
}

namespace halvor::tavelabi {
using CreateFunction = BasePlugin* (*)(ITavel*);
using ProduceFunction = bool (*)(const TimePoint&);
using ConsumeFunction = void (*)(const TimePoint&);
}  // namespace halvor::tavelabi
