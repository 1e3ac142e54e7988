// The plug-in library's C entry points: the host finds them with dlsym.
#include "kelo/Kelo.h"
#include "tavelabi/PluginEntryPoints.h"

namespace {
halvor::kelo::Kelo* keloInstance = nullptr;
}

extern "C" {

halvor::tavelabi::BasePlugin* create(halvor::tavelabi::ITavel* tavel) {
  keloInstance = new halvor::kelo::Kelo(tavel);
  return keloInstance;
}

bool produce(const halvor::tavelabi::TimePoint& now) {
  return keloInstance != nullptr && keloInstance->produce(now);
}

void consume(const halvor::tavelabi::TimePoint& now) {
  if (keloInstance != nullptr) {
    keloInstance->consume(now);
  }
}

}  // extern "C"
