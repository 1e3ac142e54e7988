#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>

#include "kelo/handlers/http/files/FileExceptions.h"
#include "kelo/handlers/http/files/FileHandlerHelpers.h"
#include "support/FakePluginInfo.h"
#include "support/RecordingHost.h"
#include "unit/handlers/http/files/FakeUsbMount.h"
#include "unit/handlers/http/files/UploadFixture.h"

namespace halvor::kelo::test {
namespace {

using tavelabi::Resource;
using tavelabi::ResourceValue;

web::HttpFile fileOf(const std::string& name, const std::string& content) {
  auto owner = std::make_shared<std::string>(content);
  return web::HttpFile("file", name, "application/octet-stream", *owner, owner);
}

std::string readAll(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

ResourceValue catalogueEntry(const std::string& guid, const std::string& name) {
  ResourceValue::Map entry;
  entry["fileGuid"] = ResourceValue(guid);
  entry["fileName"] = ResourceValue(name);
  entry["fileSize"] = ResourceValue(1234);
  entry["fileDuration"] = ResourceValue(61);
  entry["fileTypeId"] = ResourceValue(1);
  entry["targetMountedVolume"] = ResourceValue(4);
  return ResourceValue(entry);
}

Resource mountedVolumes() {
  Resource answer;
  answer.addValue("AUDIO", ResourceValue(std::vector<std::string>{"USB_A", "USB"}));
  answer.addValue("audio", ResourceValue(std::vector<std::string>{"USB", "NO_SUCH_VOLUME"}));
  return answer;
}

class FileHelpersTest : public StorageRootTest {
 protected:
  RecordingHost host;
  FakePluginInfo info;
  web::HttpRequestPtr req = makeRequest(web::Get, "/1/api/files/audio", "");
};

TEST(FileTypeWords, EachUrlWordNamesItsTypeAndListPath) {
  EXPECT_EQ(FileHandlerHelpers::getFileTypeFromString("audio"), protobuf::AUDIO);
  EXPECT_EQ(FileHandlerHelpers::getFileTypeFromString("upgradeFile"), protobuf::UPGRADE_FILE);
  EXPECT_EQ(FileHandlerHelpers::getFileTypeFromString("keloCertificates"),
            protobuf::KELO_CERTIFICATE);
  EXPECT_EQ(FileHandlerHelpers::getFileTypeFromString("zephlinkCertificates"),
            protobuf::ZEPHLINK_CERTIFICATE);
  EXPECT_EQ(FileHandlerHelpers::getPathToList("audio"), "/files/list/audioFiles");
  EXPECT_EQ(FileHandlerHelpers::getPathToList("upgradeFile"), "/files/list/upgradeFiles");
  EXPECT_EQ(FileHandlerHelpers::getPathToList("keloCertificates"),
            "/files/list/keloCertificateFiles");
  EXPECT_EQ(FileHandlerHelpers::getPathToList("zephlinkCertificates"),
            "/files/list/zephlinkCertificateFiles");
}

TEST(FileTypeWords, AnUnknownWordIsRefusedWithItsText) {
  try {
    FileHandlerHelpers::getFileTypeFromString("Audio");
    FAIL() << "no exception";
  } catch (const UnknownFileType& e) {
    EXPECT_STREQ(e.what(), "Unknown file type: Audio");
  }
  EXPECT_THROW(FileHandlerHelpers::getPathToList("AUDIO"), UnknownFileType);
}

TEST(StorageVolumes, NamesAreComparedExactlyAndTheUnknownVolumeIsNeverValid) {
  EXPECT_TRUE(FileHandlerHelpers::validTargetStorageVolume("USB"));
  EXPECT_TRUE(FileHandlerHelpers::validTargetStorageVolume("ONBOARD_FILESYSTEM"));
  EXPECT_TRUE(FileHandlerHelpers::validTargetStorageVolume("USB_2B"));
  EXPECT_FALSE(FileHandlerHelpers::validTargetStorageVolume("usb"));
  EXPECT_FALSE(FileHandlerHelpers::validTargetStorageVolume("UNKNOWN_VOLUME"));
  EXPECT_FALSE(FileHandlerHelpers::validTargetStorageVolume(""));
  EXPECT_FALSE(FileHandlerHelpers::validTargetStorageVolume("USB "));
}

TEST(StorageVolumes, EachVolumeHasItsDirectoryAndOthersFallToTheGenericStick) {
  EXPECT_EQ(FileHandlerHelpers::volumeDirectory(protobuf::ONBOARD_FILESYSTEM),
            "/data/halvor/files");
  EXPECT_EQ(FileHandlerHelpers::volumeDirectory(protobuf::USB), "/mnt/USB");
  EXPECT_EQ(FileHandlerHelpers::volumeDirectory(protobuf::USB_A), "/mnt/USB-A");
  EXPECT_EQ(FileHandlerHelpers::volumeDirectory(protobuf::USB_B), "/mnt/USB-B");
  EXPECT_EQ(FileHandlerHelpers::volumeDirectory(protobuf::USB_1), "/mnt/USB-1");
  EXPECT_EQ(FileHandlerHelpers::volumeDirectory(protobuf::USB_4), "/mnt/USB-4");
  EXPECT_EQ(FileHandlerHelpers::volumeDirectory(protobuf::USB_1A), "/mnt/USB-1A");
  EXPECT_EQ(FileHandlerHelpers::volumeDirectory(protobuf::USB_2B), "/mnt/USB-2B");
  EXPECT_EQ(FileHandlerHelpers::volumeDirectory(protobuf::UNKNOWN_VOLUME), "/mnt/USB");
  EXPECT_EQ(FileHandlerHelpers::volumeDirectory(77), "/mnt/USB");
}

TEST_F(FileHelpersTest, AnUpgradeFileOnBoardIsWrittenWithoutAnyRemount) {
  FakeUsbMount mount;
  FileHandlerHelpers::saveFile(fileOf("update.pkg", "package bytes"), protobuf::UPGRADE_FILE,
                               protobuf::ONBOARD_FILESYSTEM, false, mount);
  EXPECT_TRUE(mount.calls.empty());
  EXPECT_EQ(readAll(root / "data/halvor/files/update.pkg"), "package bytes");
}

TEST_F(FileHelpersTest, TheGenericStickIsRemountedWritableThenReadOnlyAroundTheWrite) {
  FakeUsbMount mount;
  FileHandlerHelpers::saveFile(fileOf("song.mp3", "audio"), protobuf::AUDIO, protobuf::USB, false,
                               mount);
  const std::string stick = root.string() + "/mnt/USB";
  EXPECT_EQ(mount.calls, (std::vector<std::string>{"rw " + stick, "ro " + stick}));
  EXPECT_EQ(readAll(root / "mnt/USB/song.mp3"), "audio");
}

TEST_F(FileHelpersTest, AServerCertificateOnAStickGoesToItsUploadFolderAndTheStickIsRemounted) {
  FakeUsbMount mount;
  FileHandlerHelpers::saveFile(fileOf("server.pem", "pem"), protobuf::KELO_CERTIFICATE,
                               protobuf::USB_1, false, mount);
  const std::string stick = root.string() + "/mnt/USB-1";
  EXPECT_EQ(mount.calls, (std::vector<std::string>{"rw " + stick, "ro " + stick}));
  EXPECT_EQ(readAll(root / "mnt/USB-1/certificates/uploaded/server.pem"), "pem");
}

TEST_F(FileHelpersTest, OtherCertificatesLandInTheVolumesRoot) {
  FakeUsbMount mount;
  FileHandlerHelpers::saveFile(fileOf("link.crt", "crt"), protobuf::ZEPHLINK_CERTIFICATE,
                               protobuf::ONBOARD_FILESYSTEM, false, mount);
  EXPECT_EQ(readAll(root / "data/halvor/files/link.crt"), "crt");
}

TEST_F(FileHelpersTest, AStickThatCannotBeMadeWritableGetsNoWriteAndNoReadOnlyRemount) {
  FakeUsbMount mount;
  mount.failReadWrite = true;
  try {
    FileHandlerHelpers::saveFile(fileOf("song.mp3", "audio"), protobuf::AUDIO, protobuf::USB_B,
                                 false, mount);
    FAIL() << "no exception";
  } catch (const std::runtime_error& e) {
    EXPECT_EQ(std::string(e.what()),
              "Unable to remount " + root.string() + "/mnt/USB-B in read/write mode!");
  }
  EXPECT_EQ(mount.calls, (std::vector<std::string>{"rw " + root.string() + "/mnt/USB-B"}));
  EXPECT_TRUE(filesUnderRoot().empty());
}

TEST_F(FileHelpersTest, SkipWritesNothingAndTouchesNoMount) {
  FakeUsbMount mount;
  FileHandlerHelpers::saveFile(fileOf("song.mp3", "audio"), protobuf::AUDIO, protobuf::USB, true,
                               mount);
  EXPECT_TRUE(mount.calls.empty());
  EXPECT_TRUE(filesUnderRoot().empty());
}

TEST_F(FileHelpersTest, AFileThatCouldNotBeWrittenIsReportedAndTheStickGoesBackToReadOnly) {
  FakeUsbMount mount;
  // A directory in the way of the file: the write fails and no file of that name exists.
  std::filesystem::create_directories(root / "mnt/USB/song.mp3/inside");
  try {
    FileHandlerHelpers::saveFile(fileOf("song.mp3", "audio"), protobuf::AUDIO, protobuf::USB, false,
                                 mount);
    FAIL() << "no exception";
  } catch (const std::runtime_error& e) {
    EXPECT_EQ(std::string(e.what()), "File size mismatch and failed to remove file: " +
                                         root.string() + "/mnt/USB/song.mp3");
  }
  ASSERT_EQ(mount.calls.size(), 2u);
  EXPECT_EQ(mount.calls[1], "ro " + root.string() + "/mnt/USB");
}

TEST_F(FileHelpersTest, AnUnsafeNameIsNotWrittenAndTheCheckOnDiskReportsIt) {
  FakeUsbMount mount;
  EXPECT_THROW(FileHandlerHelpers::saveFile(fileOf("../escape.txt", "x"), protobuf::UPGRADE_FILE,
                                            protobuf::ONBOARD_FILESYSTEM, false, mount),
               std::runtime_error);
  EXPECT_FALSE(std::filesystem::exists(root / "data/halvor/escape.txt"));
}

TEST_F(FileHelpersTest, VolumeIsMountedLooksUpTheTypeNameAndWalksItsList) {
  host.answer("/files/mountedVolumes", mountedVolumes());
  EXPECT_TRUE(FileHandlerHelpers::volumeIsMounted(req, "USB", "AUDIO", &host, &info, "s"));
  EXPECT_FALSE(FileHandlerHelpers::volumeIsMounted(req, "USB_B", "AUDIO", &host, &info, "s"));
  try {
    FileHandlerHelpers::volumeIsMounted(req, "USB", "UPGRADE_FILE", &host, &info, "s");
    FAIL() << "no exception";
  } catch (const FileTypeHasNoStorageVolumes& e) {
    EXPECT_STREQ(e.what(),
                 "There are no storage volumes associated with the UPGRADE_FILE file type.");
  }
}

TEST_F(FileHelpersTest, UploadTargetsTakeTheQueryValueAsGivenAndUnknownNamesBecomeZero) {
  host.answer("/files/mountedVolumes", mountedVolumes());
  auto volumes = FileHandlerHelpers::getStorageVolumesForFileType(req, &host, &info, "s", "audio");
  ASSERT_EQ(volumes->volumes_size(), 2);
  EXPECT_EQ(volumes->volumes(0), protobuf::USB);
  EXPECT_EQ(volumes->volumes(1), protobuf::UNKNOWN_VOLUME);
  try {
    FileHandlerHelpers::getStorageVolumesForFileType(req, &host, &info, "s", "upgradeFile");
    FAIL() << "no exception";
  } catch (const UnknownFileType& e) {
    EXPECT_STREQ(e.what(), "Unknown file type: upgradeFile");
  }
}

TEST(FileMessages, AnEntryMissingAKeyFailsWithMapAt) {
  ResourceValue::Map entry = catalogueEntry("g", "a.mp3").getMapValue();
  entry.erase("fileDuration");
  try {
    FileHandlerHelpers::generateFileMessage("g", ResourceValue(entry));
    FAIL() << "no exception";
  } catch (const std::out_of_range& e) {
    EXPECT_STREQ(e.what(), "map::at");
  }
}

TEST_F(FileHelpersTest, TheListAndOneFileComeFromTheCatalogue) {
  ResourceValue entries;
  entries.setList({catalogueEntry("g1", "a.mp3"), catalogueEntry("g2", "b.mp3")});
  Resource list;
  list.addValue("value", entries);
  host.answer("/files/list/audioFiles", list);
  host.answer("/files/list", list);
  auto files = FileHandlerHelpers::getFileList(req, &host, &info, "s", "/files/list/audioFiles");
  ASSERT_EQ(files->files_size(), 2);
  EXPECT_EQ(files->files(1).fileguid().value(), "g2");
  EXPECT_EQ(files->files(1).filename().value(), "b.mp3");
  EXPECT_EQ(files->files(1).filesize().value(), 1234);
  EXPECT_EQ(files->files(1).fileduration().value(), 61);
  EXPECT_EQ(files->files(1).filetypeid(), protobuf::AUDIO);
  EXPECT_EQ(files->files(1).targetmountedvolume(), protobuf::USB);
  EXPECT_EQ(FileHandlerHelpers::getFile(req, &host, &info, "s", "g2").filename().value(), "b.mp3");
  EXPECT_FALSE(FileHandlerHelpers::getFile(req, &host, &info, "s", "gone").has_fileguid());
}

}  // namespace
}  // namespace halvor::kelo::test

namespace halvor::kelo::test {
namespace {

std::string spoolOf(const std::string& path, const std::string& query,
                    web::HttpMethod method = web::Post) {
  return FileHandlerHelpers::uploadSpoolDirectory(*makeRequest(method, path, query));
}

TEST_F(FileHelpersTest, UploadsSpoolInAHiddenFolderOfTheirTargetVolume) {
  std::filesystem::create_directories(root / "data/halvor/files");
  const std::string onboard = (root / "data/halvor/files/.uploads").string();
  EXPECT_EQ(spoolOf("/1/api/files/upgradeFile", "targetMountedVolume=ONBOARD_FILESYSTEM"), onboard);
  EXPECT_EQ(spoolOf("/1/api/files/keloCertificates", "targetMountedVolume=ONBOARD_FILESYSTEM"),
            onboard);
  // Not an upload of a known type to a known volume: the server's own temporary folder.
  EXPECT_EQ(spoolOf("/1/api/files/upgradeFile", "targetMountedVolume=ONBOARD_FILESYSTEM", web::Get),
            "");
  EXPECT_EQ(spoolOf("/1/api/files/nothing", "targetMountedVolume=ONBOARD_FILESYSTEM"), "");
  EXPECT_EQ(spoolOf("/1/api/files/upgradeFile", "targetMountedVolume=UNKNOWN_VOLUME"), "");
  EXPECT_EQ(spoolOf("/1/api/files/upgradeFile", ""), "");
  EXPECT_EQ(spoolOf("/1/api/playlists", "targetMountedVolume=ONBOARD_FILESYSTEM"), "");
  // A volume whose folder is not there gets nothing made in its place.
  EXPECT_EQ(spoolOf("/1/api/files/upgradeFile", "targetMountedVolume=USB_A"), "");
  std::filesystem::create_directories(root / "mnt/USB-A");
  // Sticks that are plain folders take the spool like the on-board volume...
  EXPECT_EQ(spoolOf("/1/api/files/upgradeFile", "targetMountedVolume=USB_A"),
            (root / "mnt/USB-A/.uploads").string());
  // ...remounted ones are read-only until the upload's own remount.
  FileStorage::configure(root.string(), true);
  EXPECT_EQ(spoolOf("/1/api/files/upgradeFile", "targetMountedVolume=USB_A"), "");
  EXPECT_EQ(spoolOf("/1/api/files/upgradeFile", "targetMountedVolume=ONBOARD_FILESYSTEM"), onboard);
}

}  // namespace
}  // namespace halvor::kelo::test
