#pragma once

#include <map>
#include <string>

#include "halvor/protobuf/Files.pb.h"
#include "kelo/web/HttpRequest.h"
#include "tavelabi/IPluginInfo.h"
#include "tavelabi/ITavel.h"
#include "tavelabi/Resource.h"

namespace halvor::kelo {

// Reads of the host's playlists and the common steps of a playlist change.
class PlaylistHelperClass {
 public:
  PlaylistHelperClass() = delete;

  // True when the form has the field (an empty value passes); RequestMissingFormData otherwise.
  static bool checkForFormData(const std::map<std::string, std::string>& parameters,
                               const std::string& name);
  // "/audio/playlist/<id>" read into a Playlist, each entry's file from the file catalogue.
  static protobuf::Playlist getPlaylist(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                                        tavelabi::IPluginInfo* info, const std::string& sessionId,
                                        const std::string& guid);
  // Every playlist of "/audio/playlist/list", in list order.
  static protobuf::PlaylistList getPlaylistList(const web::HttpRequestPtr& req,
                                                tavelabi::ITavel* tavel,
                                                tavelabi::IPluginInfo* info,
                                                const std::string& sessionId);

  // The form fields of a multipart body; none when the body is not multipart.
  static std::map<std::string, std::string> formData(const web::HttpRequestPtr& req);
  // Sends the change as a Command and throws PlaylistCommandFailed when the player refuses it;
  // an answer without "success" (or a refusal without "message") is std::out_of_range.
  static void sendCommand(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                          tavelabi::IPluginInfo* info, const std::string& sessionId,
                          const std::string& path, const tavelabi::Resource& change);
};

}  // namespace halvor::kelo
