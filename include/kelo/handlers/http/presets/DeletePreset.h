#pragma once

#include <chrono>
#include <string>

#include "kelo/controllers/HttpController.h"

namespace halvor::kelo {

// DELETE "/1/api/presets/{presetId}": asks the host to delete the preset at once, then polls it
// once a second on the background queue: 200 with no body when done, 500 with the host's
// "errorMessage" when it fails. When the first answer already reports "errorOccurred" the
// response is filled (500, the host's text) but never sent: that failure reaches no client, and
// the connection, whose answer can then never come, is closed by the server without one.
class DeletePreset : public web::HttpController<DeletePreset, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_DEFERRED_ROUTE(deletePreset, "/api/presets/{presetId}", web::Delete)
  KELO_ROUTES_END

  // Between two polls of a deletion.
  static constexpr std::chrono::milliseconds kPollPeriod{1000};

  virtual void deletePreset(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                            tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                            std::string sessionId, web::ResponseCallback callback,
                            std::string presetId);
};

}  // namespace halvor::kelo
