// A plug-in library that exports create but neither produce nor consume: the simulator must
// refuse it with one line that names the missing entry point.

#include "tavelabi/BasePlugin.h"
#include "tavelabi/ITavel.h"

extern "C" halvor::tavelabi::BasePlugin* create(halvor::tavelabi::ITavel* /*tavel*/) {
  return nullptr;
}
