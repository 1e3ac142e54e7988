#pragma once

#include <string>
#include <utility>
#include <vector>

#include "kelo/controllers/KeloFrame.h"
#include "kelo/web/HttpAppFramework.h"
#include "kelo/web/HttpSimpleControllerBase.h"
#include "tavelabi/IPluginInfo.h"
#include "tavelabi/ITavel.h"

namespace halvor::kelo::web {

// The simple controller form: one handler class per path, whose only operation is
// processHttpRequest. The frame around it is asyncHandleHttpRequest.
template <class T, bool AutoCreation = true>
class KeloHttpController : public HttpSimpleControllerBase {
 public:
  void asyncHandleHttpRequest(const HttpRequestPtr& req, ResponseCallback&& callback) override {
    KeloFrame::handle(req, callback, true,
                      [this, &req](HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                   tavelabi::IPluginInfo* info, const std::string& sessionId) {
                        processHttpRequest(req, resp, tavel, info, sessionId);
                      });
  }

  virtual void processHttpRequest(const HttpRequestPtr& req, HttpResponsePtr& resp,
                                  tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                  std::string sessionId) = 0;

  // Registers T at "/1" + path for the given methods.
  static void registerRoute(HttpAppFramework& application, const std::string& path,
                            const std::vector<HttpMethod>& constraints,
                            const std::string& description) {
    application.registerHttpSimpleController<T>(KeloFrame::versionedPath(path), constraints,
                                                description);
  }
};

// The controller form for routes with path parameters: each route is a public member
// xxxWrapper(req, callback, param...) that runs the frame around the virtual xxx(req, resp,
// tavel, info, sessionId, param...), registered under the name "T::xxxWrapper".
template <class T, bool AutoCreation = true>
class HttpController {
 public:
  virtual ~HttpController() = default;

 protected:
  // The frame of a wrapper; `handler(resp, tavel, info, sessionId)` calls the virtual operation.
  template <class Handler>
  static void frame(const HttpRequestPtr& req, const ResponseCallback& callback,
                    Handler&& handler) {
    KeloFrame::handle(req, callback, false, std::forward<Handler>(handler));
  }

  // Registers T::xxxWrapper at "/1" + path under its name.
  template <class... Params>
  static void registerWrapper(HttpAppFramework& application, const std::string& path,
                              void (T::*wrapper)(const HttpRequestPtr&, ResponseCallback&&,
                                                 Params...),
                              const std::vector<HttpMethod>& constraints, const std::string& name) {
    application.registerHandler(KeloFrame::versionedPath(path), wrapper, constraints, name);
  }
};

}  // namespace halvor::kelo::web
