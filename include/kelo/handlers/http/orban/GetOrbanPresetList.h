#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/orban": every preset of the audio processor, in the order of the host's list, as
// OrbanPresetNameList JSON. A preset without one of its keys ends the list with "map::at".
class GetOrbanPresetList : public web::KeloHttpController<GetOrbanPresetList, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/orban", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
