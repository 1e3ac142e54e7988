#include "kelo/handlers/http/playlists/RenamePlaylistHandler.h"

#include "kelo/handlers/http/playlists/PlaylistHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void RenamePlaylistHandler::renamePlaylist(const web::HttpRequestPtr& req,
                                           web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                           tavelabi::IPluginInfo* info, std::string sessionId,
                                           std::string guid) {
  const std::map<std::string, std::string> form = PlaylistHelperClass::formData(req);
  PlaylistHelperClass::checkForFormData(form, "title");
  tavelabi::Resource change;
  change.addValue("playlistGuid", tavelabi::ResourceValue(guid));
  change.addValue("title", tavelabi::ResourceValue(form.at("title")));
  PlaylistHelperClass::sendCommand(req, tavel, info, sessionId, "/audio/command/playlist/rename",
                                   change);
  resp->setStatusCode(200);
}

}  // namespace halvor::kelo
