#pragma once

#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "sim/models/Model.h"
#include "tavelabi/Resource.h"

namespace halvor::sim {

// The audio player's playlists. "/audio/playlist/list" holds the playlists' guids
// ("playlist-<n>"), "/audio/playlist/<guid>" a playlist: "title" and "playlistEntries", a map
// whose keys are the entries' places ("e001", "e002", ... in playing order; renumbered after
// every change) and whose values are maps with "fileGuid".
//
// Commands under "/audio/command/playlist/": "create" ("title"), "rename" ("playlistGuid",
// "title"), "delete" ("playlistGuid"), "add" ("playlistGuid", "fileGuid", "position"),
// "remove" ("playlistGuid", "playlistEntryGuid") and "reorder" ("playlistGuid",
// "playlistEntryGuid", "position"). Each answers "success", and "message" when the player
// refuses: an unknown playlist, entry or file (one that "/files/list" does not hold), or a
// position that is not a whole number from 0 to the number of entries.
class PlaylistModel : public Model {
 public:
  static constexpr const char* kListPath = "/audio/playlist/list";

  std::string name() const override { return "playlists"; }
  std::vector<Command> commands() override;
  // One empty playlist, "Morning", unless the tree has a list already.
  void seed() override;

 private:
  struct Playlist {
    std::string title;
    std::vector<std::string> fileGuids;  // in playing order
  };

  tavelabi::Resource create(tavelabi::ResourceAction& action);
  tavelabi::Resource rename(tavelabi::ResourceAction& action);
  tavelabi::Resource remove(tavelabi::ResourceAction& action);
  tavelabi::Resource addEntry(tavelabi::ResourceAction& action);
  tavelabi::Resource removeEntry(tavelabi::ResourceAction& action);
  tavelabi::Resource reorderEntry(tavelabi::ResourceAction& action);

  // The playlist of the action's "playlistGuid"; nullptr when there is none. Under mutex_.
  Playlist* find(const tavelabi::ResourceAction& action);
  // Writes the playlist and the list to the tree. Under mutex_.
  void publish(const std::string& guid);
  void publishList();
  void write(const std::string& path, const tavelabi::Resource& resource);

  std::mutex mutex_;
  std::map<std::string, Playlist> playlists_;
  std::vector<std::string> order_;
  unsigned next_ = 1;
};

}  // namespace halvor::sim
