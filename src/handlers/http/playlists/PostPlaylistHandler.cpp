#include "kelo/handlers/http/playlists/PostPlaylistHandler.h"

#include "kelo/handlers/http/playlists/PlaylistHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {

void PostPlaylistHandler::processHttpRequest(const web::HttpRequestPtr& req,
                                             web::HttpResponsePtr& resp, tavelabi::ITavel* tavel,
                                             tavelabi::IPluginInfo* info, std::string sessionId) {
  const std::map<std::string, std::string> form = PlaylistHelperClass::formData(req);
  PlaylistHelperClass::checkForFormData(form, "title");
  tavelabi::Resource change;
  change.addValue("title", tavelabi::ResourceValue(form.at("title")));
  PlaylistHelperClass::sendCommand(req, tavel, info, sessionId, "/audio/command/playlist/create",
                                   change);
  resp->setStatusCode(200);
}

}  // namespace halvor::kelo
