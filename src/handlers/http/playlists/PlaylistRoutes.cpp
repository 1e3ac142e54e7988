#include "kelo/handlers/http/playlists/PlaylistRoutes.h"

#include "kelo/controllers/FamilyRoutes.h"
#include "kelo/handlers/http/playlists/DeletePlaylistHandler.h"
#include "kelo/handlers/http/playlists/GetPlaylistHandler.h"
#include "kelo/handlers/http/playlists/GetPlaylistListHandler.h"
#include "kelo/handlers/http/playlists/ModifyPlaylistEntryHandler.h"
#include "kelo/handlers/http/playlists/PostPlaylistHandler.h"
#include "kelo/handlers/http/playlists/RenamePlaylistHandler.h"

namespace halvor::kelo {

void PlaylistRoutes::registerPlaylistRoutes(web::HttpAppFramework& application) {
  FamilyRoutes::add<GetPlaylistListHandler, GetPlaylistHandler, PostPlaylistHandler,
                    RenamePlaylistHandler, DeletePlaylistHandler, ModifyPlaylistEntryHandler>(
      application);
}

}  // namespace halvor::kelo
