#pragma once

#include <string>

#include "kelo/controllers/HttpController.h"

namespace halvor::kelo {

// GET "/1/api/playlists/{guid}": one playlist with the files of its entries.
class GetPlaylistHandler : public web::HttpController<GetPlaylistHandler, true> {
 public:
  KELO_ROUTES_BEGIN
  KELO_ROUTE(getPlaylist, "/api/playlists/{guid}", web::Get)
  KELO_ROUTES_END

  virtual void getPlaylist(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                           tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                           std::string sessionId, std::string guid);
};

}  // namespace halvor::kelo
