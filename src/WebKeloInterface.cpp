#include "kelo/WebKeloInterface.h"

namespace halvor::kelo {

void WebKeloInterface::initAndStart(const Json::Value& /*config*/) {
  tavel = nullptr;
  pluginInfo = nullptr;
}

void WebKeloInterface::shutdown() {
  tavel = nullptr;
  pluginInfo = nullptr;
}

}  // namespace halvor::kelo
