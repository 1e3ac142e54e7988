#pragma once

#include <chrono>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "sim/models/Model.h"
#include "tavelabi/Resource.h"

namespace halvor::sim {

// The host's file catalogue: the files that the plug-in writes to the storage directories,
// found by a scan, and the volumes that are mounted.
//
// The storage directories are those of the controller ("/data/halvor/files" on board,
// "/mnt/USB", "/mnt/USB-A", ... for sticks) under a root from the fixture section "files"
// ({"storageRoot": "..."}), the same root as the plug-in's "storage-root". With a root, the
// on-board directory is made at seeding and a stick counts as mounted when its directory exists;
// without one, nothing is made and sticks are looked up in "/proc/mounts".
//
// Resources: "/files/mountedVolumes" (one key per file type name, each a list of volume names),
// "/files/list" and "/files/list/audioFiles", "/files/list/upgradeFiles",
// "/files/list/keloCertificateFiles", "/files/list/zephlinkCertificateFiles" ("value": a list of
// maps with "fileGuid", "fileName", "fileSize", "fileDuration", "fileTypeId",
// "targetMountedVolume"). Commands: "/file/command/upload" (scan now) and
// "/file/command/delete" ("fileGuid": removes the file, then scans). The model also scans about
// every two seconds, so that files that others remove leave the catalogue.
class FileModel : public Model {
 public:
  static constexpr const char* kUploadCommand = "/file/command/upload";
  static constexpr const char* kDeleteCommand = "/file/command/delete";
  static constexpr const char* kMountedVolumes = "/files/mountedVolumes";
  static constexpr const char* kFileList = "/files/list";

  std::string name() const override { return "files"; }
  std::vector<Command> commands() override;
  std::string fixtureSection() const override { return "files"; }
  void applyFixture(const Json::Value& section) override;
  void seed() override;
  void tick(const tavelabi::TimePoint& now) override;

  // Scans the directories and rewrites the catalogue and the mounted volumes.
  void scan();

 private:
  struct Volume {
    const char* name;
    int value;
    const char* directory;
  };
  static const std::vector<Volume>& volumes();

  tavelabi::Resource upload(tavelabi::ResourceAction& action);
  tavelabi::Resource remove(tavelabi::ResourceAction& action);
  void makeOnboardFolder();
  bool isMounted(const Volume& volume, const std::string& root) const;
  std::string root() const;
  void write(const std::string& path, const tavelabi::Resource& resource);

  mutable std::mutex mutex_;
  std::string root_;
  // Guid of each path found, kept across scans so that a file keeps its guid.
  std::map<std::string, std::string> guids_;
  std::map<std::string, std::string> pathsByGuid_;
  unsigned nextGuid_ = 1;
  tavelabi::TimePoint lastScan_{};
};

}  // namespace halvor::sim
