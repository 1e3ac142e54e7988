#pragma once

#include <string>

#include "kelo/controllers/KeloWsController.h"
#include "kelo/web/WebSocketConnection.h"
#include "tavelabi/Resource.h"

namespace halvor::kelo {

// A WebSocket endpoint of the common shape: a first message made by the endpoint's
// messageGenerator and sent as Binary, then a subscription that sends every change of the
// subscribed resources through the same generator. T declares
//   static constexpr const char* kPath;        the endpoint, under the version prefix
//   static constexpr const char* kPattern;     the resource pattern it subscribes, or instead
//   static std::string subscribedPattern(req); a pattern taken from the upgrade request
//   static void messageGenerator(req, resource, sessionId, message, path);
// optionally, when that generator renders from the resource and path alone,
//   static constexpr bool kMessageFromResourceOnly = true;
// and, when its first message is made from a resource that it reads first,
//   static tavelabi::Resource firstResource(req, sessionId, pattern);
// otherwise the first message is made from an empty resource.
template <class T>
class KeloWsEndpoint : public KeloWsController<T, true> {
 public:
  // The order is fixed: the first message goes out before the subscription exists, so a change
  // in between reaches the client only with the next change.
  void initialSetupAndMessage(const web::HttpRequestPtr& req,
                              const web::WebSocketConnectionPtr& conn,
                              std::string sessionId) override {
    const std::string pattern = patternOf(req);
    tavelabi::Resource first = firstResourceOf(req, sessionId, pattern);
    std::string message;
    T::messageGenerator(req, first, sessionId, message, pattern);
    conn->send(message, web::WebSocketMessageType::Binary);
    KeloWsFrame::subscribe(req, conn, &T::messageGenerator, pattern, sessionId,
                           messageFromResourceOnly<T>());
  }

 private:
  // Named apart from the members they look for: under the same name, `T::member` of an endpoint
  // that lacks the member would find the helper itself and call it again without end.
  static std::string patternOf(const web::HttpRequestPtr& req) {
    if constexpr (requires { T::subscribedPattern(req); }) {
      return T::subscribedPattern(req);
    } else {
      return T::kPattern;
    }
  }

  static tavelabi::Resource firstResourceOf(const web::HttpRequestPtr& req,
                                            const std::string& sessionId,
                                            const std::string& pattern) {
    if constexpr (requires { T::firstResource(req, sessionId, pattern); }) {
      return T::firstResource(req, sessionId, pattern);
    } else {
      return tavelabi::Resource();
    }
  }
};

}  // namespace halvor::kelo
