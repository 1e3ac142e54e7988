#include "sim/models/PlaylistModel.h"

#include <algorithm>

#include "sim/SimTavel.h"

namespace halvor::sim {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceAction;
using tavelabi::ResourceValue;

namespace {

constexpr const char* kCommands = "/audio/command/playlist/";

Resource accepted() { return Resource("success", ResourceValue(true)); }

Resource refused(const std::string& message) {
  Resource answer("success", ResourceValue(false));
  answer.addValue("message", ResourceValue(message));
  return answer;
}

const std::string& text(const ResourceAction& action, const std::string& key) {
  return action.resource.values.at(key).getStringValue();
}

// "e001" for the first place.
std::string entryKey(std::size_t index) {
  std::string number = std::to_string(index + 1);
  if (number.size() < 3) number.insert(0, 3 - number.size(), '0');
  return "e" + number;
}

// The index of an entry key, or -1.
long indexOf(const std::string& key, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) {
    if (entryKey(i) == key) return static_cast<long>(i);
  }
  return -1;
}

// A whole number from 0 to `largest`, or -1.
long positionOf(const std::string& text, std::size_t largest) {
  if (text.empty() || text.size() > 6 ||
      !std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; })) {
    return -1;
  }
  const long position = std::stol(text);
  return position <= static_cast<long>(largest) ? position : -1;
}

}  // namespace

std::vector<Command> PlaylistModel::commands() {
  const std::string base = kCommands;
  return {{base + "create", bind(&PlaylistModel::create)},
          {base + "rename", bind(&PlaylistModel::rename)},
          {base + "delete", bind(&PlaylistModel::remove)},
          {base + "add", bind(&PlaylistModel::addEntry)},
          {base + "remove", bind(&PlaylistModel::removeEntry)},
          {base + "reorder", bind(&PlaylistModel::reorderEntry)}};
}

void PlaylistModel::seed() {
  if (host().peek(kListPath)) return;
  std::lock_guard<std::mutex> lock(mutex_);
  const std::string guid = "playlist-" + std::to_string(next_++);
  playlists_[guid] = Playlist{"Morning", {}};
  order_.push_back(guid);
  publish(guid);
  publishList();
}

PlaylistModel::Playlist* PlaylistModel::find(const ResourceAction& action) {
  auto found = playlists_.find(text(action, "playlistGuid"));
  return found == playlists_.end() ? nullptr : &found->second;
}

Resource PlaylistModel::create(ResourceAction& action) {
  std::lock_guard<std::mutex> lock(mutex_);
  const std::string guid = "playlist-" + std::to_string(next_++);
  playlists_[guid] = Playlist{text(action, "title"), {}};
  order_.push_back(guid);
  publish(guid);
  publishList();
  return accepted();
}

Resource PlaylistModel::rename(ResourceAction& action) {
  std::lock_guard<std::mutex> lock(mutex_);
  Playlist* playlist = find(action);
  if (playlist == nullptr) return refused("no playlist " + text(action, "playlistGuid"));
  playlist->title = text(action, "title");
  publish(text(action, "playlistGuid"));
  return accepted();
}

Resource PlaylistModel::remove(ResourceAction& action) {
  std::lock_guard<std::mutex> lock(mutex_);
  const std::string guid = text(action, "playlistGuid");
  if (playlists_.erase(guid) == 0) return refused("no playlist " + guid);
  order_.erase(std::find(order_.begin(), order_.end(), guid));
  ResourceAction drop(CCRUD::Delete, "/audio/playlist/" + guid, nullptr, "");
  host().processInternalAction(drop);
  publishList();
  return accepted();
}

Resource PlaylistModel::addEntry(ResourceAction& action) {
  std::lock_guard<std::mutex> lock(mutex_);
  Playlist* playlist = find(action);
  if (playlist == nullptr) return refused("no playlist " + text(action, "playlistGuid"));
  const std::string& file = text(action, "fileGuid");
  bool known = false;
  if (const std::optional<Resource> files = host().peek("/files/list")) {
    for (const ResourceValue& entry : files->values.at("value").getListValue()) {
      if (entry.getMapValue().at("fileGuid").getStringValue() == file) known = true;
    }
  }
  if (!known) return refused("no audio file " + file);
  const long position = positionOf(text(action, "position"), playlist->fileGuids.size());
  if (position < 0) return refused("invalid position " + text(action, "position"));
  playlist->fileGuids.insert(playlist->fileGuids.begin() + position, file);
  publish(text(action, "playlistGuid"));
  return accepted();
}

Resource PlaylistModel::removeEntry(ResourceAction& action) {
  std::lock_guard<std::mutex> lock(mutex_);
  Playlist* playlist = find(action);
  if (playlist == nullptr) return refused("no playlist " + text(action, "playlistGuid"));
  const long index = indexOf(text(action, "playlistEntryGuid"), playlist->fileGuids.size());
  if (index < 0) return refused("no entry " + text(action, "playlistEntryGuid"));
  playlist->fileGuids.erase(playlist->fileGuids.begin() + index);
  publish(text(action, "playlistGuid"));
  return accepted();
}

Resource PlaylistModel::reorderEntry(ResourceAction& action) {
  std::lock_guard<std::mutex> lock(mutex_);
  Playlist* playlist = find(action);
  if (playlist == nullptr) return refused("no playlist " + text(action, "playlistGuid"));
  const long index = indexOf(text(action, "playlistEntryGuid"), playlist->fileGuids.size());
  if (index < 0) return refused("no entry " + text(action, "playlistEntryGuid"));
  const long position = positionOf(text(action, "position"), playlist->fileGuids.size() - 1);
  if (position < 0) return refused("invalid position " + text(action, "position"));
  const std::string moved = playlist->fileGuids[static_cast<std::size_t>(index)];
  playlist->fileGuids.erase(playlist->fileGuids.begin() + index);
  playlist->fileGuids.insert(playlist->fileGuids.begin() + position, moved);
  publish(text(action, "playlistGuid"));
  return accepted();
}

void PlaylistModel::publish(const std::string& guid) {
  const Playlist& playlist = playlists_.at(guid);
  ResourceValue::Map entries;
  for (std::size_t i = 0; i < playlist.fileGuids.size(); ++i) {
    ResourceValue::Map entry;
    entry["fileGuid"] = ResourceValue(playlist.fileGuids[i]);
    entries[entryKey(i)] = ResourceValue(entry);
  }
  Resource resource("title", ResourceValue(playlist.title));
  resource.addValue("playlistEntries", ResourceValue(entries));
  // Replaced whole, so that entries that went do not stay behind.
  ResourceAction drop(CCRUD::Delete, "/audio/playlist/" + guid, nullptr, "");
  if (host().peek(drop.path)) host().processInternalAction(drop);
  write(drop.path, resource);
}

void PlaylistModel::publishList() { write(kListPath, Resource(ResourceValue(order_))); }

void PlaylistModel::write(const std::string& path, const Resource& resource) {
  if (host().createIfAbsent(path, resource)) return;
  ResourceAction update(CCRUD::Update, path, resource, nullptr, "");
  host().processInternalAction(update);
}

}  // namespace halvor::sim
