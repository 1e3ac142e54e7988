#include "sim/models/FileModel.h"

#include <mntent.h>

#include <filesystem>
#include <fstream>
#include <set>

#include "sim/SimTavel.h"
#include "tavelabi/Exceptions.h"

namespace halvor::sim {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceAction;
using tavelabi::ResourceValue;

namespace {

constexpr const char* kOnboard = "/data/halvor/files";
constexpr const char* kCertificateFolder = "certificates/uploaded";

// File type values and names, as the plug-in's FileType.
enum FileType { kAudio = 1, kUpgrade = 2, kKeloCertificate = 3, kZephlinkCertificate = 4 };

struct TypeList {
  int type;
  const char* name;
  const char* listPath;
};

const std::vector<TypeList>& typeLists() {
  static const std::vector<TypeList> lists{
      {kAudio, "AUDIO", "/files/list/audioFiles"},
      {kUpgrade, "UPGRADE_FILE", "/files/list/upgradeFiles"},
      {kKeloCertificate, "KELO_CERTIFICATE", "/files/list/keloCertificateFiles"},
      {kZephlinkCertificate, "ZEPHLINK_CERTIFICATE", "/files/list/zephlinkCertificateFiles"},
  };
  return lists;
}

// The type of a file in a volume's root by its extension.
int typeOf(const std::filesystem::path& path) {
  const std::string extension = path.extension().string();
  for (const char* audio : {".mp3", ".wav", ".ogg", ".flac", ".aac"}) {
    if (extension == audio) return kAudio;
  }
  for (const char* certificate : {".crt", ".cer", ".pem", ".der", ".p12", ".pfx", ".p7b"}) {
    if (extension == certificate) return kZephlinkCertificate;
  }
  return kUpgrade;
}

bool inProcMounts(const std::string& directory) {
  FILE* table = ::setmntent("/proc/mounts", "r");
  if (table == nullptr) return false;
  struct mntent entry {};
  char buffer[1024];
  bool mounted = false;
  while (::getmntent_r(table, &entry, buffer, sizeof buffer) != nullptr) {
    if (directory == entry.mnt_dir) mounted = true;
  }
  ::endmntent(table);
  return mounted;
}

}  // namespace

const std::vector<FileModel::Volume>& FileModel::volumes() {
  static const std::vector<Volume> table{
      {"ONBOARD_FILESYSTEM", 1, kOnboard}, {"USB_A", 2, "/mnt/USB-A"},
      {"USB_B", 3, "/mnt/USB-B"},          {"USB", 4, "/mnt/USB"},
      {"USB_1", 5, "/mnt/USB-1"},          {"USB_2", 6, "/mnt/USB-2"},
      {"USB_3", 7, "/mnt/USB-3"},          {"USB_4", 8, "/mnt/USB-4"},
      {"USB_1A", 9, "/mnt/USB-1A"},        {"USB_2A", 10, "/mnt/USB-2A"},
      {"USB_1B", 11, "/mnt/USB-1B"},       {"USB_2B", 12, "/mnt/USB-2B"},
  };
  return table;
}

std::vector<Command> FileModel::commands() {
  return {{kUploadCommand, bind(&FileModel::upload)}, {kDeleteCommand, bind(&FileModel::remove)}};
}

void FileModel::applyFixture(const Json::Value& section) {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    root_ = section.get("storageRoot", "").asString();
  }
  // A fixture may come after seeding: the on-board folder is made for the root it names.
  makeOnboardFolder();
}

void FileModel::makeOnboardFolder() {
  const std::string storage = root();
  if (storage.empty()) return;
  std::error_code ignored;
  std::filesystem::create_directories(storage + kOnboard, ignored);
}

std::string FileModel::root() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return root_;
}

void FileModel::seed() {
  makeOnboardFolder();
  scan();
}

void FileModel::tick(const tavelabi::TimePoint& now) {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    if (now - lastScan_ < std::chrono::seconds(2)) return;
    lastScan_ = now;
  }
  scan();
}

bool FileModel::isMounted(const Volume& volume, const std::string& storage) const {
  if (storage.empty()) {
    return volume.value == 1 ? std::filesystem::is_directory(kOnboard)
                             : inProcMounts(volume.directory);
  }
  std::error_code ignored;
  return std::filesystem::is_directory(storage + volume.directory, ignored);
}

void FileModel::scan() {
  const std::string storage = root();
  std::vector<std::string> mounted;
  std::vector<std::string> sticks;
  std::vector<ResourceValue> all;
  std::map<int, std::vector<ResourceValue>> byType;
  std::set<std::string> seen;
  std::lock_guard<std::mutex> lock(mutex_);
  for (const Volume& volume : volumes()) {
    if (!isMounted(volume, storage)) continue;
    mounted.push_back(volume.name);
    if (volume.value != 1) sticks.push_back(volume.name);
    const std::filesystem::path directory = storage + volume.directory;
    for (const auto& [folder, certificates] :
         {std::pair{directory, false}, std::pair{directory / kCertificateFolder, true}}) {
      std::error_code ec;
      for (const auto& entry : std::filesystem::directory_iterator(folder, ec)) {
        const std::string fileName = entry.path().filename().string();
        // Hidden names are files being written.
        if (!entry.is_regular_file() || fileName.front() == '.') continue;
        const std::string path = entry.path().string();
        seen.insert(path);
        if (guids_.count(path) == 0) {
          guids_[path] = "file-" + std::to_string(nextGuid_++);
          pathsByGuid_[guids_[path]] = path;
        }
        const int type = certificates ? kKeloCertificate : typeOf(entry.path());
        const auto size = static_cast<int>(std::min<std::uintmax_t>(entry.file_size(), INT32_MAX));
        ResourceValue::Map record;
        record["fileGuid"] = ResourceValue(guids_[path]);
        record["fileName"] = ResourceValue(fileName);
        record["fileSize"] = ResourceValue(size);
        // A rough duration: 16 kB of compressed audio a second.
        record["fileDuration"] = ResourceValue(type == kAudio ? size / 16000 : 0);
        record["fileTypeId"] = ResourceValue(type);
        record["targetMountedVolume"] = ResourceValue(volume.value);
        all.emplace_back(record);
        byType[type].emplace_back(record);
      }
    }
  }
  // A file that has gone takes its guid with it.
  for (auto known = guids_.begin(); known != guids_.end();) {
    if (seen.count(known->first) != 0) {
      ++known;
      continue;
    }
    pathsByGuid_.erase(known->second);
    known = guids_.erase(known);
  }
  Resource volumesAnswer;
  for (const TypeList& list : typeLists()) {
    // Audio is played from sticks only; everything else may lie on board too.
    volumesAnswer.addValue(list.name, ResourceValue(list.type == kAudio ? sticks : mounted));
    ResourceValue files;
    files.setList(byType[list.type]);
    write(list.listPath, Resource(files));
  }
  ResourceValue everything;
  everything.setList(all);
  write(kFileList, Resource(everything));
  write(kMountedVolumes, volumesAnswer);
}

void FileModel::write(const std::string& path, const Resource& resource) {
  if (host().createIfAbsent(path, resource)) return;
  ResourceAction update(CCRUD::Update, path, resource, nullptr, "");
  host().processInternalAction(update);
}

Resource FileModel::upload(ResourceAction& /*action*/) {
  scan();
  return Resource();
}

Resource FileModel::remove(ResourceAction& action) {
  const std::string guid = action.resource.values.at("fileGuid").getStringValue();
  std::string path;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    auto found = pathsByGuid_.find(guid);
    if (found == pathsByGuid_.end()) {
      throw tavelabi::NonExistentResourcePathException("no file with the guid " + guid);
    }
    path = found->second;
  }
  std::error_code ignored;
  std::filesystem::remove(path, ignored);
  scan();
  return Resource();
}

}  // namespace halvor::sim
