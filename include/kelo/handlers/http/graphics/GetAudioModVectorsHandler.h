#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/graphics/audio-mod-vectors": the audio and modulation vectors, as a JSON
// AudioModVectors. The channels are read under the client's session as user activity.
class GetAudioModVectorsHandler : public web::KeloHttpController<GetAudioModVectorsHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/graphics/audio-mod-vectors", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
