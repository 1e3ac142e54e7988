#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>

#include "HttpClient.h"
#include "WebTestServer.h"
#include "kelo/web/HttpAppFramework.h"
#include "kelo/web/MultiPartParser.h"

using namespace halvor::kelo::web;
using halvor::kelo::test::eventually;
using halvor::kelo::test::HttpClient;
using halvor::kelo::test::HttpReply;
using halvor::kelo::test::WebTestServer;
namespace fs = std::filesystem;

namespace {

const std::string kBoundary = "kelo-stream-boundary";

std::string filePart(const std::string& fileName, const std::string& content) {
  return "--" + kBoundary + "\r\nContent-Disposition: form-data; name=\"file\"; filename=\"" +
         fileName + "\"\r\nContent-Type: application/octet-stream\r\n\r\n" + content + "\r\n";
}

std::string fieldPart(const std::string& name, const std::string& value) {
  return "--" + kBoundary + "\r\nContent-Disposition: form-data; name=\"" + name + "\"\r\n\r\n" +
         value + "\r\n";
}

std::string closing() { return "--" + kBoundary + "--\r\n"; }

std::string formHeader(std::size_t length) {
  return "POST /upload HTTP/1.1\r\nHost: x\r\nContent-Type: multipart/form-data; boundary=" +
         kBoundary + "\r\nContent-Length: " + std::to_string(length) + "\r\n\r\n";
}

std::string readFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

bool emptyFolder(const fs::path& folder) { return !fs::exists(folder) || fs::is_empty(folder); }

// What the upload handler saw.
struct Seen {
  std::mutex mutex;
  int calls = 0;
  int parsed = 1;
  std::string bodyFile;
  std::size_t bodyLength = 1;
  std::string target;
  std::vector<std::string> spools;
  std::vector<ino_t> spoolInodes;
  std::vector<ino_t> savedInodes;
  std::vector<std::string> saved;
};

// An application whose "/upload" saves every file part to `folder`/saved, with the file parts
// of streamed bodies written to `folder`/spool while they arrive.
class StreamedUploadTest : public ::testing::Test {
 protected:
  void SetUp() override {
    folder = fs::temp_directory_path() /
             ("kelo-stream-" + std::to_string(::getpid()) + "-" +
              ::testing::UnitTest::GetInstance()->current_test_info()->name());
    fs::remove_all(folder);
    fs::create_directories(folder);
  }
  void TearDown() override { fs::remove_all(folder); }

  void configure(HttpAppFramework& app, std::string spoolFolder = "") {
    if (spoolFolder.empty()) spoolFolder = (folder / "spool").string();
    app.config().clientMaxMemoryBodySize = 4096;
    app.config().clientMaxDiskBodySize = 8 * 1024 * 1024;
    app.config().clientMaxBodySize = 8 * 1024 * 1024;
    app.registerUploadDirectory([spoolFolder](const HttpRequest& req) {
      return req.path() == "/upload" ? spoolFolder : std::string();
    });
    app.registerHandler("/upload", [this](const HttpRequestPtr& req, ResponseCallback&& callback) {
      MultiPartParser parser;
      const int parsed = parser.parse(req);
      std::lock_guard lock(seen.mutex);
      ++seen.calls;
      seen.parsed = parsed;
      seen.bodyFile = req->bodyFilePath();
      seen.bodyLength = req->bodyLength();
      seen.target = parser.getParameter("target");
      for (const HttpFile& file : parser.getFiles()) {
        struct stat spooled {};
        seen.spools.push_back(file.spoolPath());
        seen.spoolInodes.push_back(::stat(file.spoolPath().c_str(), &spooled) == 0 ? spooled.st_ino
                                                                                   : 0);
        const fs::path path = folder / "saved" / file.getFileName();
        struct stat saved {};
        const bool ok = file.saveAs(path.string()) == 0 && ::stat(path.c_str(), &saved) == 0;
        seen.savedInodes.push_back(ok ? saved.st_ino : 0);
        seen.saved.push_back(ok ? readFile(path) : std::string());
      }
      callback(HttpResponse::newHttpResponse());
    });
  }

  fs::path folder;
  Seen seen;
};

TEST_F(StreamedUploadTest, ALargeFormIsStreamedByPartAndItsFilesAreMovedIntoPlace) {
  WebTestServer server([this](HttpAppFramework& app) { configure(app); });
  std::string first(3 * 1024 * 1024, '\0');
  for (std::size_t i = 0; i < first.size(); ++i) first[i] = static_cast<char>(i * 31 % 251);
  const std::string second = "\r\n--" + kBoundary.substr(1) + "\r\n";
  const std::string body = fieldPart("target", "USB1") + filePart("first.bin", first) +
                           filePart("second.txt", second) + closing();
  HttpClient client("127.0.0.1", server.port());
  client.setTimeout(std::chrono::milliseconds(20000));
  HttpReply reply = client.request(
      "POST", "/upload", body, {{"Content-Type", "multipart/form-data; boundary=" + kBoundary}});
  EXPECT_EQ(reply.status, 200);
  {
    std::lock_guard lock(seen.mutex);
    EXPECT_EQ(seen.calls, 1);
    EXPECT_EQ(seen.parsed, 0);
    // The body was never kept whole, in memory or in a file.
    EXPECT_EQ(seen.bodyFile, "");
    EXPECT_EQ(seen.bodyLength, 0u);
    EXPECT_EQ(seen.target, "USB1");
    ASSERT_EQ(seen.spools.size(), 2u);
    for (std::size_t i = 0; i < 2; ++i) {
      EXPECT_EQ(fs::path(seen.spools[i]).parent_path(), folder / "spool");
      // The saved file is the spooled one: the same inode.
      EXPECT_NE(seen.spoolInodes[i], 0u);
      EXPECT_EQ(seen.savedInodes[i], seen.spoolInodes[i]);
    }
    EXPECT_TRUE(seen.saved[0] == first);
    EXPECT_EQ(seen.saved[1], second);
  }
  // The spooled names and their budget go with the request.
  EXPECT_EQ(client.request("GET", "/upload").status, 200);
  EXPECT_TRUE(eventually([&] { return emptyFolder(folder / "spool"); }));
  EXPECT_TRUE(eventually([&] { return server.app().temporaryBodyBytes() == 0; }));
  EXPECT_TRUE(readFile(folder / "saved" / "first.bin") == first);
}

TEST_F(StreamedUploadTest, ACutConnectionLeavesNoPartOrTemporaryFileBehind) {
  WebTestServer server([this](HttpAppFramework& app) { configure(app); });
  const std::string complete = filePart("done.bin", std::string(100000, 'd'));
  const std::string started = filePart("cut.bin", std::string(400000, 'c'));
  const std::string body = complete + started + closing();
  auto client = std::make_unique<HttpClient>("127.0.0.1", server.port());
  // One part complete and one half way when the client goes away.
  client->sendRaw(formHeader(body.size()) + complete + started.substr(0, 200000));
  ASSERT_TRUE(eventually([&] { return server.app().temporaryBodyBytes() >= 200000; }));
  EXPECT_FALSE(emptyFolder(folder / "spool"));
  client.reset();
  EXPECT_TRUE(eventually([&] { return emptyFolder(folder / "spool"); }));
  EXPECT_TRUE(eventually([&] { return server.app().temporaryBodyBytes() == 0; }));
  std::lock_guard lock(seen.mutex);
  EXPECT_EQ(seen.calls, 0);
  EXPECT_TRUE(emptyFolder(folder / "saved"));
}

TEST_F(StreamedUploadTest, AFolderThatCannotBeWrittenFallsBackToTheTemporaryFolderAndACopy) {
  const fs::path notAFolder = folder / "file";
  std::ofstream(notAFolder) << "x";
  WebTestServer server(
      [this, notAFolder](HttpAppFramework& app) { configure(app, (notAFolder / "sub").string()); });
  const std::string content(50000, 'f');
  const std::string body = filePart("f.bin", content) + closing();
  HttpClient client("127.0.0.1", server.port());
  HttpReply reply = client.request(
      "POST", "/upload", body, {{"Content-Type", "multipart/form-data; boundary=" + kBoundary}});
  EXPECT_EQ(reply.status, 200);
  std::lock_guard lock(seen.mutex);
  ASSERT_EQ(seen.spools.size(), 1u);
  EXPECT_EQ(fs::path(seen.spools[0]).parent_path(), fs::temp_directory_path());
  EXPECT_EQ(seen.saved[0], content);
}

TEST_F(StreamedUploadTest, ChunkedFormsAreStreamedByPartToo) {
  WebTestServer server([this](HttpAppFramework& app) { configure(app); });
  const std::string body = fieldPart("target", "USB2") + filePart("c.txt", "chunky") + closing();
  std::string chunked;
  for (std::size_t at = 0; at < body.size(); at += 7) {
    const std::string piece = body.substr(at, 7);
    char size[16];
    std::snprintf(size, sizeof size, "%zx\r\n", piece.size());
    chunked += size + piece + "\r\n";
  }
  HttpClient client("127.0.0.1", server.port());
  client.sendRaw(
      "POST /upload HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: chunked\r\n"
      "Content-Type: multipart/form-data; boundary=" +
      kBoundary + "\r\n\r\n" + chunked + "0\r\n\r\n");
  EXPECT_EQ(client.readReply().status, 200);
  std::lock_guard lock(seen.mutex);
  EXPECT_EQ(seen.parsed, 0);
  EXPECT_EQ(seen.target, "USB2");
  ASSERT_EQ(seen.saved.size(), 1u);
  EXPECT_EQ(seen.saved[0], "chunky");
}

TEST_F(StreamedUploadTest, TheDiskBudgetAndTheMemoryLimitStillHold) {
  WebTestServer server([this](HttpAppFramework& app) {
    configure(app);
    app.config().clientMaxDiskBodyTotal = 100000;
  });
  // Files beyond the budget of all body files.
  const std::string tooLarge = filePart("a.bin", std::string(150000, 'a')) + closing();
  HttpClient first("127.0.0.1", server.port());
  first.sendRaw(formHeader(tooLarge.size()) + tooLarge);
  EXPECT_EQ(first.readReply().status, 413);
  // Fields beyond the memory a body may take.
  std::string fields;
  for (int i = 0; i < 10; ++i) fields += fieldPart("f" + std::to_string(i), std::string(1000, 'x'));
  fields += closing();
  HttpClient second("127.0.0.1", server.port());
  second.sendRaw(formHeader(fields.size()) + fields);
  EXPECT_EQ(second.readReply().status, 413);
  // Beyond the limit of one body, refused before it is read.
  HttpClient third("127.0.0.1", server.port());
  third.sendRaw(formHeader(9 * 1024 * 1024));
  EXPECT_EQ(third.readReply().status, 413);
  EXPECT_TRUE(eventually([&] { return emptyFolder(folder / "spool"); }));
  EXPECT_TRUE(eventually([&] { return server.app().temporaryBodyBytes() == 0; }));
  std::lock_guard lock(seen.mutex);
  EXPECT_EQ(seen.calls, 0);
}

TEST_F(StreamedUploadTest, AMalformedFormReachesTheHandlerWithThePartsBeforeTheFault) {
  WebTestServer server([this](HttpAppFramework& app) { configure(app); });
  const std::string body = filePart("good.bin", std::string(20000, 'g')) + "--" + kBoundary +
                           "\r\nNo-Colon-Here\r\n\r\nbad\r\n" + closing();
  HttpClient client("127.0.0.1", server.port());
  HttpReply reply = client.request(
      "POST", "/upload", body, {{"Content-Type", "multipart/form-data; boundary=" + kBoundary}});
  EXPECT_EQ(reply.status, 200);
  std::lock_guard lock(seen.mutex);
  EXPECT_EQ(seen.parsed, -1);
  ASSERT_EQ(seen.saved.size(), 1u);
  EXPECT_EQ(seen.saved[0].size(), 20000u);
}

}  // namespace
