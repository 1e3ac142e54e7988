#pragma once

#include <string>

#include "kelo/controllers/KeloFrame.h"
#include "kelo/controllers/RouteTable.h"
#include "kelo/web/HttpSimpleControllerBase.h"
#include "tavelabi/IPluginInfo.h"
#include "tavelabi/ITavel.h"

namespace halvor::kelo::web {

// The simple controller form: one handler class whose only operation is processHttpRequest,
// serving the paths it declares with KELO_PATH. The frame around it is asyncHandleHttpRequest.
template <class T, bool AutoCreation = true>
class KeloHttpController : public HttpSimpleControllerBase {
 public:
  using Self = T;

  void asyncHandleHttpRequest(const HttpRequestPtr& req, ResponseCallback&& callback) override {
    KeloFrame::handle(req, callback, KeloFrame::Form::Simple,
                      [this, &req](HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                   tavelabi::IPluginInfo* info, const std::string& sessionId) {
                        processHttpRequest(req, resp, tavel, info, sessionId);
                      });
  }

  virtual void processHttpRequest(const HttpRequestPtr& req, HttpResponsePtr& resp,
                                  tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                  std::string sessionId) = 0;
};

}  // namespace halvor::kelo::web
