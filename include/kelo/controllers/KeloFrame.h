#pragma once

#include <functional>
#include <string>
#include <utility>

#include "kelo/KeloHost.h"
#include "kelo/web/HttpRequest.h"
#include "kelo/web/HttpResponse.h"
#include "tavelabi/IPluginInfo.h"
#include "tavelabi/ITavel.h"

namespace halvor::kelo {

// What every REST call passes through: make the response, find the host, carry the session
// cookie, run the handler, turn its exception into a status, answer.
class KeloFrame {
 public:
  // The two controller forms differ in one step: the simple form drops a cookie "SessionID" that
  // the response may already carry before writing the session's.
  enum class Form { Simple, PathParameters };

  // The version prefix joined to every route at registration: "/api/login" is served at
  // "/1/api/login".
  static constexpr const char* kApiVersion = "1";
  static std::string versionedPath(const std::string& path) {
    return std::string("/") + kApiVersion + path;
  }

  // `handler(resp, tavel, info, sessionId)` fills the response.
  template <class Handler>
  static void handle(const web::HttpRequestPtr& req, const web::ResponseCallback& callback,
                     Form form, Handler&& handler) {
    web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
    WebKeloInterface& plugin = KeloHost::plugin();
    std::string sessionId = req->getCookie("SessionID");
    carrySessionCookie(*resp, sessionId, form);
    try {
      std::forward<Handler>(handler)(resp, plugin.tavel, plugin.pluginInfo, sessionId);
    } catch (...) {
      mapCurrentException(*resp);
    }
    if (!callback) {
      throw std::bad_function_call();
    }
    callback(resp);
  }

  // The deferred form, for a route that answers later from another thread:
  // `handler(resp, tavel, info, sessionId, callback)` either hands the callback on (to a task
  // that answers later) and returns, or throws, and is then answered here as any handler is.
  // Handing the callback on is the handler's last step.
  template <class Handler>
  static void handleDeferred(const web::HttpRequestPtr& req, const web::ResponseCallback& callback,
                             Form form, Handler&& handler) {
    web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
    WebKeloInterface& plugin = KeloHost::plugin();
    std::string sessionId = req->getCookie("SessionID");
    carrySessionCookie(*resp, sessionId, form);
    if (!callback) {
      throw std::bad_function_call();
    }
    try {
      std::forward<Handler>(handler)(resp, plugin.tavel, plugin.pluginInfo, sessionId, callback);
    } catch (...) {
      mapCurrentException(*resp);
      callback(resp);
    }
  }

  // The value goes back as the client sent it, with the path inside the cookie's value. The
  // simple form first drops a cookie the response may already carry.
  static void carrySessionCookie(web::HttpResponse& resp, const std::string& sessionId, Form form) {
    if (form == Form::Simple) {
      resp.removeCookie("SessionID");
    }
    resp.addCookie("SessionID", sessionId + ";Path=/");
  }

  // Inside a catch block: a dead session is 440, a refused right 403, anything else 500 with the
  // exception's diagnostic text as plain text. Each closes the connection.
  static void mapCurrentException(web::HttpResponse& resp);
};

}  // namespace halvor::kelo
