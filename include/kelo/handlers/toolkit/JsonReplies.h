#pragma once

#include <google/protobuf/message.h>

#include <string>

#include "kelo/web/HttpResponse.h"
#include "tavelabi/Resource.h"

namespace halvor::kelo {

// The success answers of the handlers that reply with JSON: content type JSON, the text, 200.
class JsonReplies {
 public:
  JsonReplies() = delete;

  // The message printed with the shared print options: members at their default are left out.
  static void reply(web::HttpResponsePtr& resp, const google::protobuf::Message& message);
  // The message with members at their default printed too, for the few answers that show them.
  static void replyWithDefaults(web::HttpResponsePtr& resp,
                                const google::protobuf::Message& message);
  // The host's resource as Resource JSON.
  static void replyWithResource(web::HttpResponsePtr& resp, tavelabi::Resource resource);
  // Text that is already JSON.
  static void replyJson(web::HttpResponsePtr& resp, std::string json);
  // Content type JSON and the text, for the few answers whose status is left as it is.
  static void setJson(web::HttpResponsePtr& resp, std::string json);

  // The host's resource printed as Resource JSON, for answers that set their own headers.
  static std::string resourceJson(tavelabi::Resource resource);
};

}  // namespace halvor::kelo
