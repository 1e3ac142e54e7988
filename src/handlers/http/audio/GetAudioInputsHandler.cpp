#include "kelo/handlers/http/audio/GetAudioInputsHandler.h"

#include "halvor/factories/MonitoringFactories.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

namespace {

constexpr const char* kInputsPath = "/system/audio/inputs";

// The keys of a map value as a resource, for the factories: each takes the keys it knows when
// they are there ("label" and "meterPath"; "name") and leaves the others unset.
tavelabi::Resource resourceOf(const tavelabi::ResourceValue& element) {
  tavelabi::Resource resource;
  resource.values = element.getMapValue();
  return resource;
}

protobuf::AudioInput inputOf(const tavelabi::ResourceValue& element) {
  tavelabi::Resource input = resourceOf(element);
  protobuf::HalvorPbFactory2AudioInput factory;
  const auto channels = input.values.find("channels");
  if (channels != input.values.end()) {
    for (const tavelabi::ResourceValue& channel : channels->second.getListValue()) {
      tavelabi::Resource keys = resourceOf(channel);
      protobuf::HalvorPbFactory2AudioInputChannel channelFactory;
      *factory.overrides().add_channels() = *channelFactory.build(&keys);
    }
  }
  return *factory.build(&input);
}

}  // namespace

void GetAudioInputsHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                               web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                               tavelabi::IPluginInfo* info, std::string sessionId) {
  const tavelabi::Resource answer = HostReads::read(req, tavel, info, sessionId, kInputsPath);
  protobuf::HalvorPbFactory2AudioInputsList inputs;
  for (const tavelabi::ResourceValue& element : answer.values.at("value").getListValue()) {
    *inputs.overrides().add_inputs() = inputOf(element);
  }
  JsonReplies::reply(resp, *inputs.build(nullptr));
}

}  // namespace halvor::kelo
