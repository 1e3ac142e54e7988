#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/remote-io/rules/outputs": every output rule, each read from the path the list names.
class GetRemoteIOOutputRules : public web::KeloHttpController<GetRemoteIOOutputRules, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/remote-io/rules/outputs", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
