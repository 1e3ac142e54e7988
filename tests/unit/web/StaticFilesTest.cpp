#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "StaticFiles.h"
#include "kelo/web/WebConfig.h"

using namespace halvor::kelo::web;
namespace fs = std::filesystem;

namespace {

class StaticFilesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/kelo-static-XXXXXX";
    ASSERT_NE(::mkdtemp(pattern), nullptr);
    base = pattern;
    root = base / "www";
    fs::create_directories(root / "css");
    write(root / "index.html", "<html>home</html>");
    write(root / "css" / "site.css", "body{}");
    write(root / "config.json", "{\"Password\":\"x\"}");
    write(root / "server.key", "KEY");
    write(root / "server.crt", "CRT");
    write(root / "kelo.log", "LOG");
    write(root / "notes.bin", "BIN");
    write(base / "secret.html", "outside");
    fs::create_symlink(base / "secret.html", root / "link.html");
  }
  void TearDown() override { fs::remove_all(base); }
  static void write(const fs::path& path, const std::string& text) { std::ofstream(path) << text; }
  StaticFiles files() const { return StaticFiles(root.string(), WebConfig().fileTypes); }

  fs::path base;
  fs::path root;
};

TEST_F(StaticFilesTest, ServesFilesOfAdmittedTypes) {
  EXPECT_EQ(files().resolve("/css/site.css"), (root / "css" / "site.css").string());
  EXPECT_EQ(files().resolve("/index.html"), (root / "index.html").string());
}

TEST_F(StaticFilesTest, RootAndDirectoriesMeanTheirIndex) {
  EXPECT_EQ(files().resolve("/"), (root / "index.html").string());
  EXPECT_EQ(files().resolve(""), (root / "index.html").string());
  EXPECT_EQ(files().resolve("/css"), "");  // no index.html there
}

TEST_F(StaticFilesTest, NeverServesConfigurationKeysCertificatesOrLogs) {
  std::vector<std::string> everything = {"json", "key", "crt", "pem", "log", "html"};
  StaticFiles permissive(root.string(), everything);
  EXPECT_EQ(permissive.resolve("/config.json"), "");
  EXPECT_EQ(permissive.resolve("/server.key"), "");
  EXPECT_EQ(permissive.resolve("/server.crt"), "");
  EXPECT_EQ(permissive.resolve("/kelo.log"), "");
  EXPECT_NE(permissive.resolve("/index.html"), "");
}

TEST_F(StaticFilesTest, OnlyListedExtensions) {
  EXPECT_EQ(files().resolve("/notes.bin"), "");
  StaticFiles onlyCss(root.string(), {"css"});
  EXPECT_EQ(onlyCss.resolve("/index.html"), "");
  EXPECT_NE(onlyCss.resolve("/css/site.css"), "");
}

TEST_F(StaticFilesTest, TraversalIsRefused) {
  EXPECT_EQ(files().resolve("/../secret.html"), "");
  EXPECT_EQ(files().resolve("/css/../../secret.html"), "");
  EXPECT_EQ(files().resolve("/../www/index.html"), "");
  EXPECT_EQ(files().resolve("..\\secret.html"), "");
  EXPECT_EQ(files().resolve(std::string("/index.html\0.css", 16)), "");
  // Climbing inside the root is fine.
  EXPECT_NE(files().resolve("/css/../index.html"), "");
}

TEST_F(StaticFilesTest, SymbolicLinksOutOfTheRootAreRefused) {
  EXPECT_EQ(files().resolve("/link.html"), "");
}

TEST_F(StaticFilesTest, MissingRootServesNothing) {
  StaticFiles none((base / "nothing").string(), WebConfig().fileTypes);
  EXPECT_EQ(none.resolve("/index.html"), "");
}

TEST_F(StaticFilesTest, LoadSetsContentTypeAndBody) {
  HttpResponse response;
  StaticFiles served = files();
  ASSERT_TRUE(served.load((root / "css" / "site.css").string(), response));
  EXPECT_EQ(response.bodyView(), "body{}");
  EXPECT_EQ(response.contentType(), CT_TEXT_CSS);
  EXPECT_FALSE(served.load((root / "missing.css").string(), response));
}

TEST_F(StaticFilesTest, ResponsesOfOneFileShareOneCopyOfIt) {
  StaticFiles served = files();
  HttpResponse first;
  HttpResponse second;
  ASSERT_TRUE(served.load((root / "index.html").string(), first));
  ASSERT_TRUE(served.load((root / "index.html").string(), second));
  EXPECT_EQ(first.bodyView(), "<html>home</html>");
  EXPECT_EQ(first.bodyView().data(), second.bodyView().data());
}

TEST_F(StaticFilesTest, AFileChangedOnDiskIsReadAnew) {
  StaticFiles served = files();
  HttpResponse before;
  ASSERT_TRUE(served.load((root / "index.html").string(), before));
  // Replaced the way a deployment does it: a new file renamed over the old one.
  write(root / "new.html", "<html>new</html>");
  fs::rename(root / "new.html", root / "index.html");
  HttpResponse after;
  ASSERT_TRUE(served.load((root / "index.html").string(), after));
  EXPECT_EQ(before.bodyView(), "<html>home</html>");
  EXPECT_EQ(after.bodyView(), "<html>new</html>");
}

}  // namespace
