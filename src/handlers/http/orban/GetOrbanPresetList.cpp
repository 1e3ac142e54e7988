#include "kelo/handlers/http/orban/GetOrbanPresetList.h"

#include "halvor/protobuf/Processor.pb.h"
#include "kelo/handlers/http/orban/OrbanPresetHelpers.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetOrbanPresetList::processHttpRequest(const web::HttpRequestPtr& req,
                                            web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                            tavelabi::IPluginInfo* info, std::string sessionId) {
  const auto presets = HostReads::readEach(
      req, tavel, info, sessionId, OrbanPresetHelpers::kPresetList, [&](const std::string& name) {
        tavelabi::Resource preset =
            HostReads::read(req, tavel, info, sessionId, OrbanPresetHelpers::presetPath(name));
        return OrbanPresetHelpers::presetOf(preset);
      });
  protobuf::OrbanPresetNameList list;
  for (const auto& preset : presets) {
    *list.add_presets() = *preset;
  }
  JsonReplies::reply(resp, list);
}

}  // namespace halvor::kelo
