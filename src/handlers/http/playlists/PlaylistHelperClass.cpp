#include "kelo/handlers/http/playlists/PlaylistHelperClass.h"

#include "kelo/handlers/http/files/FileHandlerHelpers.h"
#include "kelo/handlers/http/playlists/PlaylistCommandFailed.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"
#include "kelo/web/MultiPartParser.h"

namespace halvor::kelo {

bool PlaylistHelperClass::checkForFormData(const std::map<std::string, std::string>& parameters,
                                           const std::string& name) {
  if (parameters.count(name) == 0) throw RequestMissingFormData(name);
  return true;
}

protobuf::Playlist PlaylistHelperClass::getPlaylist(const web::HttpRequestPtr& req,
                                                    tavelabi::ITavel* tavel,
                                                    tavelabi::IPluginInfo* info,
                                                    const std::string& sessionId,
                                                    const std::string& guid) {
  // The guid is put in for the placeholder as it stands ("$&" in a guid is no format).
  std::string path = "/audio/playlist/<id>";
  path.replace(path.find("<id>"), 4, guid);
  const tavelabi::Resource answer = HostReads::read(req, tavel, info, sessionId, path);
  protobuf::Playlist playlist;
  playlist.set_title(answer.values.at("title").getStringValue());
  // The host's map keeps its entries in key order.
  for (const auto& [key, entry] : answer.values.at("playlistEntries").getMapValue()) {
    protobuf::PlaylistEntry* item = playlist.add_playlistentries();
    item->set_playlistentryguid(key);
    const std::string& fileGuid = entry.getMapValue().at("fileGuid").getStringValue();
    *item->mutable_file() = FileHandlerHelpers::getFile(req, tavel, info, sessionId, fileGuid);
  }
  return playlist;
}

protobuf::PlaylistList PlaylistHelperClass::getPlaylistList(const web::HttpRequestPtr& req,
                                                            tavelabi::ITavel* tavel,
                                                            tavelabi::IPluginInfo* info,
                                                            const std::string& sessionId) {
  protobuf::PlaylistList list;
  for (const std::string& guid :
       HostReads::readTexts(req, tavel, info, sessionId, "/audio/playlist/list")) {
    *list.add_playlists() = getPlaylist(req, tavel, info, sessionId, guid);
  }
  return list;
}

std::map<std::string, std::string> PlaylistHelperClass::formData(const web::HttpRequestPtr& req) {
  web::MultiPartParser parser;
  (void)parser.parse(req);  // a body that is not multipart has no fields
  return parser.getParameters();
}

void PlaylistHelperClass::sendCommand(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                                      tavelabi::IPluginInfo* info, const std::string& sessionId,
                                      const std::string& path, const tavelabi::Resource& change) {
  KeloResourceAction action(tavelabi::CCRUD::Command, path, change, info, sessionId, req);
  const tavelabi::Resource answer = tavel->processResourceAction(action);
  if (!answer.values.at("success").getBoolValue()) {
    throw PlaylistCommandFailed(answer.values.at("message").getStringValue());
  }
}

}  // namespace halvor::kelo
