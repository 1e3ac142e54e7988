#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/remote-io/actions/inputs": what each input channel can trigger, at eight levels
// each.
class GetRemoteIOInputActions : public web::KeloHttpController<GetRemoteIOInputActions, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/remote-io/actions/inputs", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
