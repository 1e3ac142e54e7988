#include "kelo/handlers/http/playlists/DeletePlaylistHandler.h"

#include "kelo/handlers/http/playlists/PlaylistHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void DeletePlaylistHandler::deletePlaylist(const web::HttpRequestPtr& req,
                                           web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                           tavelabi::IPluginInfo* info, std::string sessionId,
                                           std::string guid) {
  tavelabi::Resource change;
  change.addValue("playlistGuid", tavelabi::ResourceValue(guid));
  PlaylistHelperClass::sendCommand(req, tavel, info, sessionId, "/audio/command/playlist/delete",
                                   change);
  resp->setStatusCode(200);
}

}  // namespace halvor::kelo
