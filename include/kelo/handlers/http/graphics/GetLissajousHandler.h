#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/graphics/lissajous": the Lissajous figure of the stereo audio, as a JSON Lissajous.
// The channels are read under the client's session as user activity.
class GetLissajousHandler : public web::KeloHttpController<GetLissajousHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/graphics/lissajous", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
