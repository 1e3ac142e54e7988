#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "kelo/web/HttpRequest.h"
#include "tavelabi/IPluginInfo.h"
#include "tavelabi/ITavel.h"
#include "tavelabi/Resource.h"

namespace halvor::kelo {

// What every graph shares: the path of a graphics channel, its read, and the copy of one of its
// byte arrays that a decoder reads.
class GraphicsChannelHelpers {
 public:
  GraphicsChannelHelpers() = delete;

  static constexpr const char* kPathTemplate = "/system/graphics/<resourceName>";

  // The channel's resource path: the template with "<resourceName>" replaced by the name.
  static std::string channelPath(const std::string& channel);

  // A Read of the channel whose request holds only "byPassSessionActivityTimerUpdate" = byPass:
  // false for REST, true for most WebSocket pushes, so that an open graph is not user activity.
  static tavelabi::Resource readChannel(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                                        tavelabi::IPluginInfo* info, const std::string& sessionId,
                                        const std::string& channel, bool byPass);

  // The byte array under `key` copied into a vector the caller owns. A missing key throws
  // std::out_of_range ("map::at"); a value that is no byte array throws as its getter does.
  static std::vector<std::uint8_t> copyBlock(const tavelabi::Resource& answer,
                                             const std::string& key);
};

}  // namespace halvor::kelo
