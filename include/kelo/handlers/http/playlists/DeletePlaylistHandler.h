#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"

namespace halvor::kelo {

// DELETE "/1/api/playlists/{guid}": deletes the playlist; 200 with no body.
class DeletePlaylistHandler : public web::HttpController<DeletePlaylistHandler, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_ROUTE(deletePlaylist, "/api/playlists/{guid}", web::Delete)
  KELO_ROUTES_END

  virtual void deletePlaylist(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                              tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                              std::string sessionId, std::string guid);
};

}  // namespace halvor::kelo
