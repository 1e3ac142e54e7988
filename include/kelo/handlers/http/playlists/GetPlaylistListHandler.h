#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// GET "/1/api/playlists": every playlist.
class GetPlaylistListHandler : public web::KeloHttpController<GetPlaylistListHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/playlists", web::Get)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
