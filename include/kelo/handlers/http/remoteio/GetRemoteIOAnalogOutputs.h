#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/remote-io/analogOutputs": every analog output, each read from the path the list
// names.
class GetRemoteIOAnalogOutputs : public web::KeloHttpController<GetRemoteIOAnalogOutputs, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/remote-io/analogOutputs", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
