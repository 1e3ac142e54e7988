#include "kelo/handlers/http/graphics/GraphicsChannelHelpers.h"

#include "kelo/handlers/toolkit/HostReads.h"

namespace halvor::kelo {

std::string GraphicsChannelHelpers::channelPath(const std::string& channel) {
  static const std::string kPlaceholder = "<resourceName>";
  std::string path = kPathTemplate;
  path.replace(path.find(kPlaceholder), kPlaceholder.size(), channel);
  return path;
}

tavelabi::Resource GraphicsChannelHelpers::readChannel(const web::HttpRequestPtr& req,
                                                       tavelabi::ITavel* tavel,
                                                       tavelabi::IPluginInfo* info,
                                                       const std::string& sessionId,
                                                       const std::string& channel, bool byPass) {
  return HostReads::readFlagged(req, tavel, info, sessionId, channelPath(channel), byPass);
}

std::vector<std::uint8_t> GraphicsChannelHelpers::copyBlock(const tavelabi::Resource& answer,
                                                            const std::string& key) {
  const tavelabi::ResourceValue& value = answer.values.at(key);
  const std::uint8_t* bytes = value.getByteArray();
  return std::vector<std::uint8_t>(bytes, bytes + value.getByteArraySize());
}

}  // namespace halvor::kelo
