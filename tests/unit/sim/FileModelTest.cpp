#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "SimTestSupport.h"
#include "sim/FixtureLoader.h"
#include "sim/models/FileModel.h"
#include "sim/models/ModelRegistry.h"
#include "tavelabi/Exceptions.h"

namespace halvor::sim {
namespace {

using kelo::test::HostWithUsers;
using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceAction;
using tavelabi::ResourceValue;

std::unique_ptr<Model> makeFiles() { return std::make_unique<FileModel>(); }

class FileModelTest : public ::testing::Test {
 protected:
  void SetUp() override {
    root = std::filesystem::temp_directory_path() /
           ("kelo-file-model-" + std::to_string(::getpid()) + "-" +
            ::testing::UnitTest::GetInstance()->current_test_info()->name());
    std::filesystem::remove_all(root);
    std::filesystem::create_directories(root / "mnt/USB-A");
    ModelRegistry::install(host, {makeFiles});
    Fixture fixture;
    fixture.source = "test fixture";
    Json::Value section;
    section["storageRoot"] = root.string();
    fixture.sections.emplace_back("files", section);
    host.applyFixture(fixture);
  }
  void TearDown() override { std::filesystem::remove_all(root); }

  void put(const std::string& relative, const std::string& content) {
    std::filesystem::create_directories((root / relative).parent_path());
    std::ofstream(root / relative, std::ios::binary) << content;
  }

  Resource command(const std::string& path, const Resource& request = Resource()) {
    ResourceAction action(CCRUD::Command, path, request, nullptr, "");
    return host.processInternalAction(action);
  }

  std::vector<std::string> names(const std::string& listPath) {
    std::vector<std::string> found;
    const std::optional<Resource> list = host.peek(listPath);
    for (const ResourceValue& entry : list->values.at("value").getListValue()) {
      found.push_back(entry.getMapValue().at("fileName").getStringValue());
    }
    return found;
  }

  std::vector<std::string> volumesFor(const std::string& type) {
    std::vector<std::string> found;
    const std::optional<Resource> volumes = host.peek(FileModel::kMountedVolumes);
    for (const ResourceValue& name : volumes->values.at(type).getListValue()) {
      found.push_back(name.getStringValue());
    }
    return found;
  }

  std::filesystem::path root;
  SimTavel host{HostWithUsers::quietOptions()};
};

TEST_F(FileModelTest, TheOnBoardFolderIsMadeAndExistingStickFoldersAreMounted) {
  command(FileModel::kUploadCommand);
  EXPECT_TRUE(std::filesystem::is_directory(root / "data/halvor/files"));
  EXPECT_EQ(volumesFor("AUDIO"), std::vector<std::string>{"USB_A"});
  EXPECT_EQ(volumesFor("UPGRADE_FILE"), (std::vector<std::string>{"ONBOARD_FILESYSTEM", "USB_A"}));
  EXPECT_EQ(volumesFor("KELO_CERTIFICATE"),
            (std::vector<std::string>{"ONBOARD_FILESYSTEM", "USB_A"}));
  std::filesystem::create_directories(root / "mnt/USB-2B");
  command(FileModel::kUploadCommand);
  EXPECT_EQ(volumesFor("AUDIO"), (std::vector<std::string>{"USB_A", "USB_2B"}));
}

TEST_F(FileModelTest, AScanListsFilesByPlaceAndExtensionAndLeavesHiddenOnesOut) {
  put("mnt/USB-A/song.mp3", std::string(32000, 'a'));
  put("data/halvor/files/update.pkg", "pkg");
  put("data/halvor/files/link.crt", "crt");
  put("data/halvor/files/certificates/uploaded/server.pem", "pem");
  put("data/halvor/files/.update.pkg.12-1.part", "being written");
  command(FileModel::kUploadCommand);
  EXPECT_EQ(names("/files/list/audioFiles"), std::vector<std::string>{"song.mp3"});
  EXPECT_EQ(names("/files/list/upgradeFiles"), std::vector<std::string>{"update.pkg"});
  EXPECT_EQ(names("/files/list/zephlinkCertificateFiles"), std::vector<std::string>{"link.crt"});
  EXPECT_EQ(names("/files/list/keloCertificateFiles"), std::vector<std::string>{"server.pem"});
  EXPECT_EQ(names(FileModel::kFileList).size(), 4u);
  const std::optional<Resource> audio = host.peek("/files/list/audioFiles");
  const ResourceValue::Map song = audio->values.at("value").getListValue()[0].getMapValue();
  EXPECT_EQ(song.at("fileSize").getIntValue(), 32000);
  EXPECT_EQ(song.at("fileDuration").getIntValue(), 2);
  EXPECT_EQ(song.at("fileTypeId").getIntValue(), 1);
  EXPECT_EQ(song.at("targetMountedVolume").getIntValue(), 2);
}

TEST_F(FileModelTest, DeleteRemovesTheFileOfTheGuidAndAnUnknownGuidIsRefused) {
  put("data/halvor/files/update.pkg", "pkg");
  command(FileModel::kUploadCommand);
  const std::optional<Resource> upgrades = host.peek("/files/list/upgradeFiles");
  const std::string guid =
      upgrades->values.at("value").getListValue()[0].getMapValue().at("fileGuid").getStringValue();
  Resource request;
  request.addValue("fileGuid", ResourceValue(guid));
  command(FileModel::kDeleteCommand, request);
  EXPECT_FALSE(std::filesystem::exists(root / "data/halvor/files/update.pkg"));
  EXPECT_TRUE(names("/files/list/upgradeFiles").empty());
  EXPECT_THROW(command(FileModel::kDeleteCommand, request),
               tavelabi::NonExistentResourcePathException);
}

TEST(SimRestartTest, TheRestartCommandIsCountedAndCallsTheHandler) {
  SimTavel host(HostWithUsers::quietOptions());
  int called = 0;
  host.setRestartHandler([&called] { ++called; });
  ResourceAction restart(CCRUD::Command, "/command/restartTavel", nullptr, "");
  host.processInternalAction(restart);
  EXPECT_EQ(host.restartRequests(), 1u);
  EXPECT_EQ(called, 1);
}

}  // namespace
}  // namespace halvor::sim
