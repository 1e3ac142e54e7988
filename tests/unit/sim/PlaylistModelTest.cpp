#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "SimTestSupport.h"
#include "sim/models/ModelRegistry.h"
#include "sim/models/PlaylistModel.h"

namespace halvor::sim {
namespace {

using kelo::test::HostWithUsers;
using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceAction;
using tavelabi::ResourceValue;

std::unique_ptr<Model> makePlaylists() { return std::make_unique<PlaylistModel>(); }

class PlaylistModelTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ResourceValue files;
    ResourceValue::Map a{{"fileGuid", ResourceValue(std::string("fa"))}};
    ResourceValue::Map b{{"fileGuid", ResourceValue(std::string("fb"))}};
    files.setList({ResourceValue(a), ResourceValue(b)});
    host.createIfAbsent("/files/list", Resource(files));
    ModelRegistry::install(host, {makePlaylists});
  }

  Resource command(const std::string& name,
                   const std::vector<std::pair<std::string, std::string>>& values) {
    Resource request;
    for (const auto& [key, value] : values) request.addValue(key, ResourceValue(value));
    ResourceAction action(CCRUD::Command, "/audio/command/playlist/" + name, request, nullptr, "");
    return host.processInternalAction(action);
  }

  // The file guids of the playlist's entries in key order.
  std::vector<std::string> entries(const std::string& guid) {
    const std::optional<Resource> playlist = host.peek("/audio/playlist/" + guid);
    std::vector<std::string> files;
    for (const auto& [key, entry] : playlist->values.at("playlistEntries").getMapValue()) {
      files.push_back(entry.getMapValue().at("fileGuid").getStringValue());
    }
    return files;
  }

  SimTavel host{HostWithUsers::quietOptions()};
};

TEST_F(PlaylistModelTest, TheDemoHasOneEmptyPlaylistAndCreatingAddsOne) {
  EXPECT_EQ(host.peek(PlaylistModel::kListPath)->values.at("value").getListValue().size(), 1u);
  EXPECT_TRUE(entries("playlist-1").empty());
  EXPECT_TRUE(command("create", {{"title", "Evening"}}).values.at("success").getBoolValue());
  const std::optional<Resource> list = host.peek(PlaylistModel::kListPath);
  ASSERT_EQ(list->values.at("value").getListValue().size(), 2u);
  EXPECT_EQ(host.peek("/audio/playlist/playlist-2")->values.at("title").getStringValue(),
            "Evening");
}

TEST_F(PlaylistModelTest, EntriesAreAddedMovedAndRemovedByPlace) {
  EXPECT_TRUE(
      command("add", {{"playlistGuid", "playlist-1"}, {"fileGuid", "fa"}, {"position", "0"}})
          .values.at("success")
          .getBoolValue());
  command("add", {{"playlistGuid", "playlist-1"}, {"fileGuid", "fb"}, {"position", "0"}});
  EXPECT_EQ(entries("playlist-1"), (std::vector<std::string>{"fb", "fa"}));
  command("reorder",
          {{"playlistGuid", "playlist-1"}, {"playlistEntryGuid", "e001"}, {"position", "1"}});
  EXPECT_EQ(entries("playlist-1"), (std::vector<std::string>{"fa", "fb"}));
  command("remove", {{"playlistGuid", "playlist-1"}, {"playlistEntryGuid", "e001"}});
  EXPECT_EQ(entries("playlist-1"), std::vector<std::string>{"fb"});
}

TEST_F(PlaylistModelTest, ThePlayerRefusesWhatItDoesNotKnow) {
  Resource answer = command("rename", {{"playlistGuid", "nope"}, {"title", "x"}});
  EXPECT_FALSE(answer.values.at("success").getBoolValue());
  EXPECT_EQ(answer.values.at("message").getStringValue(), "no playlist nope");
  answer =
      command("add", {{"playlistGuid", "playlist-1"}, {"fileGuid", "gone"}, {"position", "0"}});
  EXPECT_EQ(answer.values.at("message").getStringValue(), "no audio file gone");
  answer =
      command("add", {{"playlistGuid", "playlist-1"}, {"fileGuid", "fa"}, {"position", "two"}});
  EXPECT_EQ(answer.values.at("message").getStringValue(), "invalid position two");
  answer = command("remove", {{"playlistGuid", "playlist-1"}, {"playlistEntryGuid", "e009"}});
  EXPECT_EQ(answer.values.at("message").getStringValue(), "no entry e009");
  EXPECT_TRUE(
      command("delete", {{"playlistGuid", "playlist-1"}}).values.at("success").getBoolValue());
  EXPECT_FALSE(host.peek("/audio/playlist/playlist-1").has_value());
  EXPECT_FALSE(
      command("delete", {{"playlistGuid", "playlist-1"}}).values.at("success").getBoolValue());
}

}  // namespace
}  // namespace halvor::sim
