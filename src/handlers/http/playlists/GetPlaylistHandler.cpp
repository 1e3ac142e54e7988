#include "kelo/handlers/http/playlists/GetPlaylistHandler.h"

#include "kelo/handlers/http/playlists/PlaylistHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetPlaylistHandler::getPlaylist(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                                     tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                                     std::string sessionId, std::string guid) {
  JsonReplies::reply(resp, PlaylistHelperClass::getPlaylist(req, tavel, info, sessionId, guid));
}

}  // namespace halvor::kelo
