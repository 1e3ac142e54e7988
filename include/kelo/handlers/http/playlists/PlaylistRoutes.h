#pragma once

#include "kelo/web/HttpAppFramework.h"

namespace halvor::kelo {

// The routes of the audio player's playlists.
class PlaylistRoutes {
 public:
  PlaylistRoutes() = delete;
  static void registerPlaylistRoutes(web::HttpAppFramework& application);
};

}  // namespace halvor::kelo
