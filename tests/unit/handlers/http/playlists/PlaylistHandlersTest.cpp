#include <gtest/gtest.h>

#include <stdexcept>

#include "kelo/Exceptions.h"
#include "kelo/handlers/http/playlists/DeletePlaylistHandler.h"
#include "kelo/handlers/http/playlists/GetPlaylistHandler.h"
#include "kelo/handlers/http/playlists/GetPlaylistListHandler.h"
#include "kelo/handlers/http/playlists/ModifyPlaylistEntryHandler.h"
#include "kelo/handlers/http/playlists/PlaylistCommandFailed.h"
#include "kelo/handlers/http/playlists/PlaylistHelperClass.h"
#include "kelo/handlers/http/playlists/PostPlaylistHandler.h"
#include "kelo/handlers/http/playlists/RenamePlaylistHandler.h"
#include "support/FakePluginInfo.h"
#include "support/RecordingHost.h"
#include "support/Requests.h"

namespace halvor::kelo::test {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;

constexpr const char* kBoundary = "playlist-form";

web::HttpRequestPtr formRequest(web::HttpMethod method, const std::string& path,
                                const std::vector<std::pair<std::string, std::string>>& fields) {
  std::string body;
  for (const auto& [name, value] : fields) {
    body += std::string("--") + kBoundary + "\r\nContent-Disposition: form-data; name=\"" + name +
            "\"\r\n\r\n" + value + "\r\n";
  }
  body += std::string("--") + kBoundary + "--\r\n";
  web::HttpRequestPtr req = makeRequest(method, path, "", body);
  req->addHeader("Content-Type", std::string("multipart/form-data; boundary=") + kBoundary);
  return req;
}

Resource accepted() {
  Resource answer;
  answer.addValue("success", ResourceValue(true));
  return answer;
}

Resource refused(const std::string& message) {
  Resource answer;
  answer.addValue("success", ResourceValue(false));
  answer.addValue("message", ResourceValue(message));
  return answer;
}

ResourceValue fileEntry(const std::string& guid, const std::string& name) {
  ResourceValue::Map entry;
  entry["fileGuid"] = ResourceValue(guid);
  entry["fileName"] = ResourceValue(name);
  entry["fileSize"] = ResourceValue(10);
  entry["fileDuration"] = ResourceValue(2);
  entry["fileTypeId"] = ResourceValue(1);
  entry["targetMountedVolume"] = ResourceValue(4);
  return ResourceValue(entry);
}

Resource playlist(const std::string& title, const std::map<std::string, std::string>& entries) {
  Resource answer;
  answer.addValue("title", ResourceValue(title));
  ResourceValue::Map map;
  for (const auto& [key, fileGuid] : entries) {
    ResourceValue::Map entry;
    entry["fileGuid"] = ResourceValue(fileGuid);
    map[key] = ResourceValue(entry);
  }
  answer.addValue("playlistEntries", ResourceValue(map));
  return answer;
}

class PlaylistTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ResourceValue files;
    files.setList({fileEntry("f1", "one.mp3"), fileEntry("f2", "two.mp3")});
    Resource catalogue;
    catalogue.addValue("value", files);
    host.answer("/files/list", catalogue);
  }

  // The failure's text, "" when the call succeeded with 200.
  template <class Call>
  std::string outcome(Call&& call) {
    web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
    try {
      call(resp);
    } catch (const std::exception& e) {
      return e.what();
    }
    EXPECT_EQ(resp->statusCode(), 200);
    body = resp->body();
    return "";
  }

  RecordingHost host;
  FakePluginInfo info;
  std::string body;
};

TEST_F(PlaylistTest, APlaylistHasItsEntriesInKeyOrderWithTheirFiles) {
  host.answer("/audio/playlist/p1", playlist("Morning", {{"b", "f1"}, {"a", "f2"}, {"c", "gone"}}));
  const protobuf::Playlist list =
      PlaylistHelperClass::getPlaylist(makeRequest(web::Get, "/", ""), &host, &info, "s", "p1");
  EXPECT_EQ(list.title(), "Morning");
  ASSERT_EQ(list.playlistentries_size(), 3);
  EXPECT_EQ(list.playlistentries(0).playlistentryguid(), "a");
  EXPECT_EQ(list.playlistentries(0).file().filename().value(), "two.mp3");
  EXPECT_EQ(list.playlistentries(1).file().fileguid().value(), "f1");
  // A file that has gone from the catalogue leaves the entry's file empty.
  EXPECT_FALSE(list.playlistentries(2).file().has_fileguid());
}

TEST_F(PlaylistTest, APlaylistWithoutEntriesIsEmptyAndWithoutTheKeyIsMapAt) {
  host.answer("/audio/playlist/empty", playlist("Quiet", {}));
  Resource noEntries;
  noEntries.addValue("title", ResourceValue(std::string("Broken")));
  host.answer("/audio/playlist/broken", noEntries);
  GetPlaylistHandler handler;
  EXPECT_EQ(outcome([&](web::HttpResponsePtr& resp) {
              handler.getPlaylist(makeRequest(web::Get, "/", ""), resp, &host, &info, "s", "empty");
            }),
            "");
  EXPECT_EQ(body, R"({"title":"Quiet"})");
  EXPECT_EQ(outcome([&](web::HttpResponsePtr& resp) {
              handler.getPlaylist(makeRequest(web::Get, "/", ""), resp, &host, &info, "s",
                                  "broken");
            }),
            "map::at");
}

TEST_F(PlaylistTest, TheListReadsEachPlaylistInOrder) {
  Resource list;
  list.addValue("value", ResourceValue(std::vector<std::string>{"p2", "p1"}));
  host.answer("/audio/playlist/list", list);
  host.answer("/audio/playlist/p1", playlist("One", {{"e", "f1"}}));
  host.answer("/audio/playlist/p2", playlist("Two", {}));
  GetPlaylistListHandler handler;
  EXPECT_EQ(outcome([&](web::HttpResponsePtr& resp) {
              handler.processHttpRequest(makeRequest(web::Get, "/1/api/playlists", ""), resp, &host,
                                         &info, "s");
            }),
            "");
  EXPECT_NE(
      body.find(
          R"({"playlists":[{"title":"Two"},{"title":"One","playlistEntries":[{"playlistEntryGuid":"e")"),
      std::string::npos)
      << body;
}

TEST_F(PlaylistTest, CreatingSendsTheTitleAndAnEmptyTitlePasses) {
  host.answer("/audio/command/playlist/create", accepted());
  PostPlaylistHandler handler;
  EXPECT_EQ(outcome([&](web::HttpResponsePtr& resp) {
              handler.processHttpRequest(
                  formRequest(web::Post, "/1/api/playlists", {{"title", ""}}), resp, &host, &info,
                  "s");
            }),
            "");
  const auto& action = host.onlyAction();
  EXPECT_EQ(action.action, CCRUD::Command);
  EXPECT_EQ(action.path, "/audio/command/playlist/create");
  EXPECT_EQ(action.resource.values.size(), 1u);
  EXPECT_EQ(action.resource.values.at("title").getStringValue(), "");
  EXPECT_EQ(body, "");
}

TEST_F(PlaylistTest, AMissingTitleIsRefusedBeforeTheHostIsAsked) {
  PostPlaylistHandler handler;
  EXPECT_EQ(outcome([&](web::HttpResponsePtr& resp) {
              handler.processHttpRequest(
                  formRequest(web::Post, "/1/api/playlists", {{"name", "x"}}), resp, &host, &info,
                  "s");
            }),
            "Request missing form data: title.");
  EXPECT_TRUE(host.actions().empty());
}

TEST_F(PlaylistTest, ThePlayersRefusalAndAnAnswerWithoutSuccess) {
  host.answer("/audio/command/playlist/rename", refused("no such playlist"));
  RenamePlaylistHandler rename;
  EXPECT_EQ(outcome([&](web::HttpResponsePtr& resp) {
              rename.renamePlaylist(formRequest(web::Put, "/", {{"title", "New"}}), resp, &host,
                                    &info, "s", "p9");
            }),
            "MPlayer Error! no such playlist");
  const auto& action = host.onlyAction();
  EXPECT_EQ(action.resource.values.at("playlistGuid").getStringValue(), "p9");
  EXPECT_EQ(action.resource.values.at("title").getStringValue(), "New");
  host.answer("/audio/command/playlist/delete", Resource());
  DeletePlaylistHandler remove;
  EXPECT_EQ(outcome([&](web::HttpResponsePtr& resp) {
              remove.deletePlaylist(makeRequest(web::Delete, "/", ""), resp, &host, &info, "s",
                                    "p9");
            }),
            "map::at");
}

TEST_F(PlaylistTest, DeletingNeedsNoForm) {
  host.answer("/audio/command/playlist/delete", accepted());
  DeletePlaylistHandler handler;
  EXPECT_EQ(outcome([&](web::HttpResponsePtr& resp) {
              handler.deletePlaylist(makeRequest(web::Delete, "/", ""), resp, &host, &info, "s",
                                     "p1");
            }),
            "");
  EXPECT_EQ(host.onlyAction().resource.values.at("playlistGuid").getStringValue(), "p1");
  EXPECT_EQ(host.onlyAction().resource.values.size(), 1u);
}

TEST_F(PlaylistTest, EachEntryOperationSendsItsFieldsAsText) {
  host.answer("/audio/command/playlist/add", accepted());
  host.answer("/audio/command/playlist/remove", accepted());
  host.answer("/audio/command/playlist/reorder", accepted());
  ModifyPlaylistEntryHandler handler;
  auto modify = [&](const std::string& operation,
                    const std::vector<std::pair<std::string, std::string>>& fields) {
    return outcome([&](web::HttpResponsePtr& resp) {
      handler.modifyPlaylistEntry(formRequest(web::Put, "/", fields), resp, &host, &info, "s",
                                  operation, "p1");
    });
  };
  EXPECT_EQ(modify("add_entry", {{"fileGuid", "f1"}, {"position", "not a number"}}), "");
  auto add = host.actionsOn("/audio/command/playlist/add");
  ASSERT_EQ(add.size(), 1u);
  EXPECT_EQ(add[0].resource.values.size(), 3u);
  EXPECT_EQ(add[0].resource.values.at("position").getStringValue(), "not a number");
  EXPECT_EQ(add[0].resource.values.at("fileGuid").getStringValue(), "f1");
  EXPECT_EQ(modify("remove_entry", {{"playlistEntryGuid", "e1"}}), "");
  EXPECT_EQ(host.actionsOn("/audio/command/playlist/remove")[0]
                .resource.values.at("playlistEntryGuid")
                .getStringValue(),
            "e1");
  EXPECT_EQ(modify("reorder", {{"playlistEntryGuid", "e1"}, {"position", "3"}}), "");
  EXPECT_EQ(host.actionsOn("/audio/command/playlist/reorder")[0].resource.values.size(), 3u);
  EXPECT_EQ(modify("reorder", {{"playlistEntryGuid", "e1"}}),
            "Request missing form data: position.");
  EXPECT_EQ(modify("add_entry", {{"position", "1"}}), "Request missing form data: fileGuid.");
}

TEST_F(PlaylistTest, AnUnknownOperationGoesToTheHostWithAnEmptyPath) {
  host.otherwise(refused("unknown command"));
  ModifyPlaylistEntryHandler handler;
  EXPECT_EQ(outcome([&](web::HttpResponsePtr& resp) {
              handler.modifyPlaylistEntry(formRequest(web::Put, "/", {{"title", "x"}}), resp, &host,
                                          &info, "s", "foo", "1234");
            }),
            "MPlayer Error! unknown command");
  const auto& action = host.onlyAction();
  EXPECT_EQ(action.action, CCRUD::Command);
  EXPECT_EQ(action.path, "");
  EXPECT_TRUE(action.resource.values.empty());
}

TEST(PlaylistForms, TheFieldCheckPassesAnEmptyValueAndNamesAMissingOne) {
  EXPECT_TRUE(PlaylistHelperClass::checkForFormData({{"title", ""}}, "title"));
  try {
    PlaylistHelperClass::checkForFormData({}, "position");
    FAIL() << "no exception";
  } catch (const RequestMissingFormData& e) {
    EXPECT_STREQ(e.what(), "Request missing form data: position.");
  }
}

}  // namespace
}  // namespace halvor::kelo::test
