#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"

namespace halvor::kelo {

// PUT "/1/api/playlists/{guid}", form "title": renames the playlist; 200 with no body.
class RenamePlaylistHandler : public web::HttpController<RenamePlaylistHandler, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_ROUTE(renamePlaylist, "/api/playlists/{guid}", web::Put)
  KELO_ROUTES_END

  virtual void renamePlaylist(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                              tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                              std::string sessionId, std::string guid);
};

}  // namespace halvor::kelo
