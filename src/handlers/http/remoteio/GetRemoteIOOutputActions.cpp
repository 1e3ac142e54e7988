#include "kelo/handlers/http/remoteio/GetRemoteIOOutputActions.h"

#include <vector>

#include "halvor/protobuf/RemoteIo.pb.h"
#include "kelo/handlers/http/remoteio/RemoteIOHandlerHelpers.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetRemoteIOOutputActions::processHttpRequest(const web::HttpRequestPtr& req,
                                                  web::HttpResponsePtr& resp,
                                                  tavelabi::ITavel* tavel,
                                                  tavelabi::IPluginInfo* info,
                                                  std::string sessionId) {
  const tavelabi::Resource answer =
      HostReads::read(req, tavel, info, sessionId, "/remoteio/outputs/actions");
  const auto& channels = answer.values.at("channelId").getListValue();
  const auto& labels = answer.values.at("label").getListValue();
  const auto& states = answer.values.at("values").getListValue();
  // The first state is mask 0, the second mask 1.
  const std::vector<std::string> names{states.at(0).getStringValue(),
                                       states.at(1).getStringValue()};
  const std::vector<int> masks{0, 1};
  protobuf::RemoteIoActions actions;
  for (std::size_t index = 0; index < labels.size(); ++index) {
    *actions.add_actions() = RemoteIOHandlerHelpers::makeRemoteIoAction(
        channels.at(index).getIntValue(), labels.at(index).getStringValue(),
        protobuf::RemoteIoEnums::OUTPUT, names, masks);
  }
  JsonReplies::reply(resp, actions);
}

}  // namespace halvor::kelo
