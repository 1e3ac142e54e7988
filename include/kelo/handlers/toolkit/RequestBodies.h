#pragma once

#include <google/protobuf/message.h>
#include <json/value.h>

#include "kelo/web/HttpRequest.h"

namespace halvor::kelo {

// JSON request bodies, with their failures in a fixed order and before any call to the host.
class RequestBodies {
 public:
  RequestBodies() = delete;

  // An empty body throws RequestMissingFormData("body") first, whatever the parser would say; a
  // body that does not parse throws InvalidJson with the parser's messages.
  static Json::Value json(const web::HttpRequestPtr& req);

  // The checks of json(), then the same text converted into a message with the strict parse
  // options. The converter's status is not looked at: JSON that does not fit the message leaves
  // it as the converter left it, and the host's own checks stand behind it.
  template <class Message>
  static Message message(const web::HttpRequestPtr& req) {
    Message message;
    parseInto(req, message);
    return message;
  }
  static void parseInto(const web::HttpRequestPtr& req, google::protobuf::Message& message);
};

}  // namespace halvor::kelo
