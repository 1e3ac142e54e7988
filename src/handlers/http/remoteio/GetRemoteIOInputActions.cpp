#include "kelo/handlers/http/remoteio/GetRemoteIOInputActions.h"

#include <vector>

#include "halvor/protobuf/RemoteIo.pb.h"
#include "kelo/handlers/http/remoteio/RemoteIOHandlerHelpers.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetRemoteIOInputActions::processHttpRequest(const web::HttpRequestPtr& req,
                                                 web::HttpResponsePtr& resp,
                                                 tavelabi::ITavel* tavel,
                                                 tavelabi::IPluginInfo* info,
                                                 std::string sessionId) {
  const tavelabi::Resource answer =
      HostReads::read(req, tavel, info, sessionId, "/remoteio/inputs/actions");
  const auto& channels = answer.values.at("channelId").getListValue();
  const auto& labels = answer.values.at("label").getListValue();
  (void)answer.values.at("polarityMask");  // mandatory, although the masks are fixed here
  const auto& names = answer.values.at("value").getListValue();
  // The eight levels of a channel are the bits of one byte.
  std::vector<int> masks;
  for (int mask = 1; mask <= 128; mask *= 2) masks.push_back(mask);
  protobuf::RemoteIoActions actions;
  for (std::size_t index = 0; index < labels.size(); ++index) {
    std::vector<std::string> levelNames;
    for (std::size_t level = 0; level < masks.size(); ++level) {
      levelNames.push_back(names.at(masks.size() * index + level).getStringValue());
    }
    *actions.add_actions() = RemoteIOHandlerHelpers::makeRemoteIoAction(
        channels.at(index).getIntValue(), labels.at(index).getStringValue(),
        protobuf::RemoteIoEnums::INPUT, levelNames, masks);
  }
  JsonReplies::reply(resp, actions);
}

}  // namespace halvor::kelo
