#include "kelo/handlers/http/playlists/ModifyPlaylistEntryHandler.h"

#include <map>
#include <vector>

#include "kelo/handlers/http/playlists/PlaylistHelperClass.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {
namespace {

struct Operation {
  const char* path;
  std::vector<const char*> fields;
};

// The operations the player knows, in the order they are compared.
const std::map<std::string, Operation>& operations() {
  static const std::map<std::string, Operation> known{
      {"add_entry", {"/audio/command/playlist/add", {"fileGuid", "position"}}},
      {"remove_entry", {"/audio/command/playlist/remove", {"playlistEntryGuid"}}},
      {"reorder", {"/audio/command/playlist/reorder", {"playlistEntryGuid", "position"}}},
  };
  return known;
}

}  // namespace

void ModifyPlaylistEntryHandler::modifyPlaylistEntry(const web::HttpRequestPtr& req,
                                                     web::HttpResponsePtr& resp,
                                                     tavelabi::ITavel* tavel,
                                                     tavelabi::IPluginInfo* info,
                                                     std::string sessionId,
                                                     std::string operationType, std::string guid) {
  const std::map<std::string, std::string> form = PlaylistHelperClass::formData(req);
  std::string path;
  tavelabi::Resource change;
  auto operation = operations().find(operationType);
  // Another operation is not refused here: it goes out with an empty path and nothing in it,
  // and the host is the one that refuses it.
  if (operation != operations().end()) {
    for (const char* field : operation->second.fields) {
      PlaylistHelperClass::checkForFormData(form, field);
    }
    path = operation->second.path;
    change.addValue("playlistGuid", tavelabi::ResourceValue(guid));
    // "position" goes as the text the form holds; the host reads it.
    for (const char* field : operation->second.fields) {
      change.addValue(field, tavelabi::ResourceValue(form.at(field)));
    }
  }
  PlaylistHelperClass::sendCommand(req, tavel, info, sessionId, path, change);
  resp->setStatusCode(200);
}

}  // namespace halvor::kelo
