#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/audio/inputs": the audio inputs with their channels and the meter path of each
// channel.
class GetAudioInputsHandler : public web::KeloHttpController<GetAudioInputsHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/audio/inputs", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
