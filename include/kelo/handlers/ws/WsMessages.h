#pragma once

#include <google/protobuf/message_lite.h>

#include <string>

#include "kelo/web/HttpRequest.h"
#include "tavelabi/Resource.h"

namespace halvor::kelo {

// The steps that the message generators of the WebSocket endpoints share. They run on I/O
// threads for first messages and on the host's thread for pushes, so they reach the host
// through KeloHost.
class WsMessages {
 public:
  WsMessages() = delete;

  // The session check that starts every generator: a Read of `path` under the client's session
  // that is not user activity. A dead session throws NonExistentSessionException; the answer is
  // not needed.
  static void checkSession(const web::HttpRequestPtr& req, const std::string& sessionId,
                           const std::string& path);
  // The same read, answered.
  static tavelabi::Resource readBypassingActivity(const web::HttpRequestPtr& req,
                                                  const std::string& sessionId,
                                                  const std::string& path);
  // `message` in protobuf's binary wire form, the payload of one Binary frame; serialised
  // deterministically, so that equal messages are equal frames.
  static void serialize(const google::protobuf::MessageLite& message, std::string& out);
};

}  // namespace halvor::kelo
