#include "kelo/handlers/http/playlists/GetPlaylistListHandler.h"

#include "kelo/handlers/http/playlists/PlaylistHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void GetPlaylistListHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                                web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                                tavelabi::IPluginInfo* info,
                                                std::string sessionId) {
  JsonReplies::reply(resp, PlaylistHelperClass::getPlaylistList(req, tavel, info, sessionId));
}

}  // namespace halvor::kelo
