#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/remote-io/actions/outputs": what can drive each output channel; the two states
// are common to all outputs.
class GetRemoteIOOutputActions : public web::KeloHttpController<GetRemoteIOOutputActions, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/remote-io/actions/outputs", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
