#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "kelo/handlers/certificates/CertificateFilesError.h"
#include "kelo/handlers/http/files/FileExceptions.h"
#include "kelo/handlers/http/files/FileHandlerHelpers.h"
#include "kelo/handlers/http/files/PostFiles.h"
#include "kelo/web/MultiPartParser.h"
#include "support/FakePluginInfo.h"
#include "support/RecordingHost.h"
#include "unit/handlers/http/files/UploadFixture.h"

namespace halvor::kelo::test {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;

class PostFilesTest : public StorageRootTest {
 protected:
  void SetUp() override {
    StorageRootTest::SetUp();
    Resource volumes;
    volumes.addValue("AUDIO", ResourceValue(std::vector<std::string>{"USB"}));
    volumes.addValue("UPGRADE_FILE",
                     ResourceValue(std::vector<std::string>{"ONBOARD_FILESYSTEM", "USB_A"}));
    volumes.addValue("KELO_CERTIFICATE",
                     ResourceValue(std::vector<std::string>{"ONBOARD_FILESYSTEM", "USB_2"}));
    host.answer("/files/mountedVolumes", volumes);
    host.answer("/file/command/upload", Resource());
    host.answer("/command/applyCertificate", Resource());
  }

  // The upload as the route makes it, the failure's text when it throws.
  std::string upload(const std::string& type, const std::string& query,
                     const std::vector<Part>& parts) {
    auto req = multipartRequest(web::Post, "/1/api/files/" + type, query, parts);
    web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
    try {
      handler.postFiles(req, resp, type, &host, &info, "session", false);
    } catch (const std::exception& e) {
      return e.what();
    }
    status = resp->statusCode();
    return "";
  }

  RecordingHost host;
  FakePluginInfo info;
  PostFiles handler;
  int status = 0;
};

TEST_F(PostFilesTest, AnUpgradeFileIsWrittenOnBoardThenTheHostIsToldToScan) {
  EXPECT_EQ(upload("upgradeFile", "targetMountedVolume=ONBOARD_FILESYSTEM",
                   {{"file", "update.pkg", "new firmware"}}),
            "");
  EXPECT_EQ(status, 200);
  EXPECT_EQ(filesUnderRoot(), std::vector<std::string>{"data/halvor/files/update.pkg"});
  auto scans = host.actionsOn("/file/command/upload");
  ASSERT_EQ(scans.size(), 1u);
  EXPECT_EQ(scans[0].action, CCRUD::Command);
  EXPECT_TRUE(scans[0].resource.values.empty());
  EXPECT_TRUE(host.actionsOn("/command/applyCertificate").empty());
}

TEST_F(PostFilesTest, AudioOnBoardIsRefusedBeforeTheHostIsAskedAnything) {
  EXPECT_EQ(upload("audio", "targetMountedVolume=ONBOARD_FILESYSTEM", {{"file", "a.mp3", "x"}}),
            "Cannot upload audio files to onboard storage!");
  EXPECT_TRUE(host.actions().empty());
  EXPECT_TRUE(filesUnderRoot().empty());
}

TEST_F(PostFilesTest, TheVolumeQueryIsRequiredAndMustNameAKnownVolume) {
  EXPECT_EQ(upload("audio", "", {{"file", "a.mp3", "x"}}),
            "Request missing query parameter: targetMountedVolume.");
  EXPECT_EQ(upload("audio", "targetMountedVolume=usb", {{"file", "a.mp3", "x"}}),
            "The target storage volume usb is unknown.");
  EXPECT_EQ(upload("audio", "targetMountedVolume=UNKNOWN_VOLUME", {{"file", "a.mp3", "x"}}),
            "The target storage volume UNKNOWN_VOLUME is unknown.");
  EXPECT_TRUE(host.actions().empty());
}

TEST_F(PostFilesTest, AnUnknownTypeWordIsRefusedWithIt) {
  EXPECT_EQ(upload("video", "targetMountedVolume=USB", {{"file", "a.mp4", "x"}}),
            "Unknown file type: video");
}

TEST_F(PostFilesTest, AVolumeNotInTheHostsListIsNotMounted) {
  EXPECT_EQ(upload("audio", "targetMountedVolume=USB_B", {{"file", "a.mp3", "x"}}),
            "The storage volume USB_B is not currently mounted.");
  EXPECT_TRUE(filesUnderRoot().empty());
}

TEST_F(PostFilesTest, ATypeTheHostHasNoVolumesFor) {
  EXPECT_EQ(upload("zephlinkCertificates", "targetMountedVolume=USB", {{"file", "a.crt", "x"}}),
            "There are no storage volumes associated with the ZEPHLINK_CERTIFICATE file type.");
}

TEST_F(PostFilesTest, ABodyWithoutAFilePartHasNoFiles) {
  EXPECT_EQ(upload("audio", "targetMountedVolume=USB", {{"title", "", "only a field"}}),
            "No files uploaded or files are empty.");
  EXPECT_TRUE(host.actionsOn("/file/command/upload").empty());
}

TEST_F(PostFilesTest, AnEmptyFilePartIsRefusedAfterTheEarlierFilesAreWritten) {
  EXPECT_EQ(upload("audio", "targetMountedVolume=USB",
                   {{"file", "first.mp3", "sound"}, {"file", "second.mp3", ""}}),
            "Uploaded file is empty or invalid.");
  EXPECT_EQ(filesUnderRoot(), std::vector<std::string>{"mnt/USB/first.mp3"});
  EXPECT_TRUE(host.actionsOn("/file/command/upload").empty());
}

TEST_F(PostFilesTest, ANameThatCouldLeaveTheFolderRefusesTheWholeUploadBeforeAnyWrite) {
  for (const std::string name : {"../../etc/passwd", "..", "a/b.mp3", "..\\x.mp3", "x..mp3"}) {
    EXPECT_EQ(upload("audio", "targetMountedVolume=USB",
                     {{"file", "good.mp3", "sound"}, {"file", name, "evil"}}),
              "Invalid file name: " + name);
  }
  EXPECT_TRUE(filesUnderRoot().empty());
  EXPECT_TRUE(host.actionsOn("/file/command/upload").empty());
}

TEST_F(PostFilesTest, TheVolumeNameIsPercentDecoded) {
  EXPECT_EQ(upload("audio", "targetMountedVolume=%55SB", {{"file", "a.mp3", "sound"}}), "");
  EXPECT_EQ(filesUnderRoot(), std::vector<std::string>{"mnt/USB/a.mp3"});
}

TEST_F(PostFilesTest, ACertificateOnAStickIsAppliedFromTheOnBoardFolder) {
  EXPECT_EQ(
      upload("keloCertificates", "targetMountedVolume=USB_2", {{"file", "server.pem", "pem text"}}),
      "");
  EXPECT_EQ(filesUnderRoot(),
            std::vector<std::string>{"mnt/USB-2/certificates/uploaded/server.pem"});
  auto applies = host.actionsOn("/command/applyCertificate");
  ASSERT_EQ(applies.size(), 1u);
  EXPECT_EQ(applies[0].action, CCRUD::Command);
  EXPECT_EQ(applies[0].resource.values.at("uploadTarget").getStringValue(),
            root.string() + "/data/halvor/files/certificates/uploaded");
  EXPECT_EQ(applies[0].resource.values.at("password").getStringValue(), "");
  // The scan comes first.
  auto all = host.actions();
  ASSERT_EQ(all.size(), 3u);
  EXPECT_EQ(all[1].path, "/file/command/upload");
  EXPECT_EQ(all[2].path, "/command/applyCertificate");
}

TEST_F(PostFilesTest, TheListenersWordsComeBackAsACertificateFilesError) {
  Resource refused;
  refused.addValue("errorMessage", ResourceValue(std::string("not supported format")));
  host.answer("/command/applyCertificate", refused);
  EXPECT_EQ(upload("keloCertificates", "targetMountedVolume=ONBOARD_FILESYSTEM",
                   {{"file", "server.pem", "pem text"}}),
            "Certificate files error: not supported format");
}

TEST_F(PostFilesTest, ABodyKeptInATemporaryFileIsSavedWhole) {
  // A body of 3 MB with a binary content, handed over to a file as the server does above its
  // memory limit.
  std::string content(3 * 1024 * 1024, '\0');
  for (std::size_t i = 0; i < content.size(); ++i) content[i] = static_cast<char>(i * 7 % 251);
  const std::string body = multipartBody({{"file", "big.pkg", content}});
  const std::filesystem::path bodyFile = root / "body.tmp";
  {
    std::ofstream out(bodyFile, std::ios::binary);
    out << body;
  }
  auto req =
      makeRequest(web::Post, "/1/api/files/upgradeFile", "targetMountedVolume=ONBOARD_FILESYSTEM");
  req->addHeader("Content-Type", std::string("multipart/form-data; boundary=") + kBoundary);
  req->setBodyFile(bodyFile.string(), body.size());
  web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
  handler.postFiles(req, resp, "upgradeFile", &host, &info, "session", false);
  std::ifstream in(root / "data/halvor/files/big.pkg", std::ios::binary);
  const std::string written((std::istreambuf_iterator<char>(in)), {});
  EXPECT_EQ(written.size(), content.size());
  EXPECT_TRUE(written == content);
}

// File parts written to one file each in a folder, as the web layer does for a body above its
// memory limit; the inode of each is remembered.
class FolderStore : public web::MultiPartParser::PartStore {
 public:
  FolderStore(std::string folder, std::vector<ino_t>& inodes)
      : folder_(std::move(folder)), inodes_(inodes) {}
  bool open() override {
    std::filesystem::create_directories(folder_);
    path_ = folder_ + "/part-" + std::to_string(inodes_.size());
    out_.open(path_, std::ios::binary);
    length_ = 0;
    return out_.good();
  }
  bool write(std::string_view bytes) override {
    out_.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    length_ += bytes.size();
    return out_.good();
  }
  std::shared_ptr<const web::HttpFile::Spool> close() override {
    out_.close();
    struct stat status {};
    inodes_.push_back(::stat(path_.c_str(), &status) == 0 ? status.st_ino : 0);
    return std::make_shared<const web::HttpFile::Spool>(path_, length_, nullptr);
  }

 private:
  std::string folder_;
  std::vector<ino_t>& inodes_;
  std::ofstream out_;
  std::string path_;
  std::size_t length_ = 0;
};

TEST_F(PostFilesTest, ABodyStreamedByPartIsMovedIntoPlaceNotCopied) {
  std::string content(2 * 1024 * 1024, '\0');
  for (std::size_t i = 0; i < content.size(); ++i) content[i] = static_cast<char>(i * 13 % 251);
  auto req =
      makeRequest(web::Post, "/1/api/files/upgradeFile", "targetMountedVolume=ONBOARD_FILESYSTEM");
  req->addHeader("Content-Type", std::string("multipart/form-data; boundary=") + kBoundary);
  std::filesystem::create_directories(root / "data/halvor/files");
  const std::string spool = FileHandlerHelpers::uploadSpoolDirectory(*req);
  ASSERT_EQ(spool, (root / "data/halvor/files/.uploads").string());
  std::vector<ino_t> inodes;
  auto form = std::make_shared<web::MultiPartParser>();
  form->begin(kBoundary, std::make_unique<FolderStore>(spool, inodes));
  const std::string body =
      multipartBody({{"file", "big.pkg", content}, {"file", "small.pkg", "tiny"}});
  for (std::size_t at = 0; at < body.size(); at += 65536) form->feed(body.substr(at, 65536));
  ASSERT_EQ(form->finish(), 0);
  req->setStreamedForm(form);
  form.reset();
  web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
  handler.postFiles(req, resp, "upgradeFile", &host, &info, "session", false);
  EXPECT_EQ(resp->statusCode(), 200);
  ASSERT_EQ(inodes.size(), 2u);
  struct stat big {};
  struct stat small {};
  ASSERT_EQ(::stat((root / "data/halvor/files/big.pkg").c_str(), &big), 0);
  ASSERT_EQ(::stat((root / "data/halvor/files/small.pkg").c_str(), &small), 0);
  EXPECT_EQ(big.st_ino, inodes[0]);
  EXPECT_EQ(small.st_ino, inodes[1]);
  std::ifstream in(root / "data/halvor/files/big.pkg", std::ios::binary);
  EXPECT_TRUE(std::string((std::istreambuf_iterator<char>(in)), {}) == content);
  // The spooled names are given back once the upload is handled; the saved files stay.
  EXPECT_EQ(req->streamedForm(), nullptr);
  EXPECT_TRUE(std::filesystem::is_empty(spool));
  EXPECT_EQ(std::filesystem::file_size(root / "data/halvor/files/small.pkg"), 4u);
}

TEST_F(PostFilesTest, AStreamedUploadWithAnUnsafeNameWritesNothingInTheTarget) {
  auto req =
      makeRequest(web::Post, "/1/api/files/upgradeFile", "targetMountedVolume=ONBOARD_FILESYSTEM");
  req->addHeader("Content-Type", std::string("multipart/form-data; boundary=") + kBoundary);
  std::filesystem::create_directories(root / "data/halvor/files");
  std::vector<ino_t> inodes;
  auto form = std::make_shared<web::MultiPartParser>();
  form->begin(kBoundary, std::make_unique<FolderStore>(
                             FileHandlerHelpers::uploadSpoolDirectory(*req), inodes));
  form->feed(multipartBody({{"file", "good.pkg", "fine"}, {"file", "../evil.pkg", "bad"}}));
  ASSERT_EQ(form->finish(), 0);
  req->setStreamedForm(form);
  form.reset();
  web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
  EXPECT_THROW(handler.postFiles(req, resp, "upgradeFile", &host, &info, "session", false),
               std::runtime_error);
  // Nothing but the (now empty) spool folder.
  EXPECT_EQ(filesUnderRoot(), std::vector<std::string>{});
  EXPECT_FALSE(std::filesystem::exists(root / "data/halvor/evil.pkg"));
}

}  // namespace
}  // namespace halvor::kelo::test
