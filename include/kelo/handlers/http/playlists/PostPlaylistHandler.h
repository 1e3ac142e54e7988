#pragma once

#include <string>

#include "kelo/controllers/KeloHttpController.h"

namespace halvor::kelo {

// POST "/1/api/playlists", form "title": creates a playlist; 200 with no body.
class PostPlaylistHandler : public web::KeloHttpController<PostPlaylistHandler, true> {
 public:
  KELO_SIMPLE_ROUTE("/api/playlists", web::Post)

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override;
};

}  // namespace halvor::kelo
