// A plug-in library whose create gives no object: the simulator must refuse it.

#include "tavelabi/PluginEntryPoints.h"

extern "C" {
halvor::tavelabi::BasePlugin* create(halvor::tavelabi::ITavel* /*tavel*/) { return nullptr; }
bool produce(const halvor::tavelabi::TimePoint& /*now*/) { return false; }
void consume(const halvor::tavelabi::TimePoint& /*now*/) {}
}
