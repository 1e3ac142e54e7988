#include "kelo/handlers/http/files/FileHandlerHelpers.h"

#include <sys/stat.h>

#include <cstdio>
#include <filesystem>
#include <map>
#include <stdexcept>

#include "kelo/controllers/KeloFrame.h"
#include "kelo/handlers/http/files/FileExceptions.h"
#include "kelo/handlers/http/files/FileStorage.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"

namespace halvor::kelo {
namespace {

struct FileTypeWord {
  protobuf::FileType type;
  const char* listPath;
};

const std::map<std::string, FileTypeWord>& fileTypeWords() {
  static const std::map<std::string, FileTypeWord> words{
      {"audio", {protobuf::AUDIO, "/files/list/audioFiles"}},
      {"upgradeFile", {protobuf::UPGRADE_FILE, "/files/list/upgradeFiles"}},
      {"keloCertificates", {protobuf::KELO_CERTIFICATE, "/files/list/keloCertificateFiles"}},
      {"zephlinkCertificates",
       {protobuf::ZEPHLINK_CERTIFICATE, "/files/list/zephlinkCertificateFiles"}},
  };
  return words;
}

const FileTypeWord& fileTypeWord(const std::string& word) {
  auto found = fileTypeWords().find(word);
  if (found == fileTypeWords().end()) throw UnknownFileType(word);
  return found->second;
}

// Puts a stick back to read-only on every way out of saveFile once it was made writable.
class ReadOnlyAgain {
 public:
  ReadOnlyAgain(IUsbMount& mount, std::string directory, bool remounted)
      : mount_(mount), directory_(std::move(directory)), remounted_(remounted) {}
  ~ReadOnlyAgain() {
    if (remounted_) (void)mount_.remountReadOnly(directory_);
  }
  ReadOnlyAgain(const ReadOnlyAgain&) = delete;
  ReadOnlyAgain& operator=(const ReadOnlyAgain&) = delete;

 private:
  IUsbMount& mount_;
  std::string directory_;
  bool remounted_;
};

}  // namespace

bool FileHandlerHelpers::validTargetStorageVolume(const std::string& name) {
  protobuf::TargetStorageVolume volume{};
  return protobuf::TargetStorageVolume_Parse(name, &volume) && volume != protobuf::UNKNOWN_VOLUME;
}

int FileHandlerHelpers::getFileTypeFromString(const std::string& word) {
  return fileTypeWord(word).type;
}

std::string FileHandlerHelpers::getPathToList(const std::string& fileTypeWord_) {
  return fileTypeWord(fileTypeWord_).listPath;
}

std::string FileHandlerHelpers::volumeDirectory(int volume) {
  switch (volume) {
    case protobuf::ONBOARD_FILESYSTEM:
      return std::string("/data") + "/halvor/files";
    case protobuf::USB_A:
      return "/mnt/USB-A";
    case protobuf::USB_B:
      return "/mnt/USB-B";
    case protobuf::USB_1:
      return "/mnt/USB-1";
    case protobuf::USB_2:
      return "/mnt/USB-2";
    case protobuf::USB_3:
      return "/mnt/USB-3";
    case protobuf::USB_4:
      return "/mnt/USB-4";
    case protobuf::USB_1A:
      return "/mnt/USB-1A";
    case protobuf::USB_2A:
      return "/mnt/USB-2A";
    case protobuf::USB_1B:
      return "/mnt/USB-1B";
    case protobuf::USB_2B:
      return "/mnt/USB-2B";
    default:
      return "/mnt/USB";  // USB, UNKNOWN_VOLUME and any other value
  }
}

std::string FileHandlerHelpers::targetDirectory(int fileType, int volume) {
  std::string directory = FileStorage::root() + volumeDirectory(volume);
  // Only the server's own certificates have a sub-directory, where the listener looks.
  if (fileType == protobuf::KELO_CERTIFICATE) directory += "/certificates/uploaded";
  return directory;
}

std::string FileHandlerHelpers::uploadSpoolDirectory(const web::HttpRequest& req) {
  static const std::string prefix = KeloFrame::versionedPath("/api/files/");
  if (req.method() != web::Post || req.path().rfind(prefix, 0) != 0) return {};
  const std::string volumeName = req.getParameter("targetMountedVolume");
  if (!validTargetStorageVolume(volumeName)) return {};
  if (fileTypeWords().count(req.path().substr(prefix.size())) == 0) return {};
  protobuf::TargetStorageVolume volume{};
  protobuf::TargetStorageVolume_Parse(volumeName, &volume);
  if (volume > protobuf::ONBOARD_FILESYSTEM && FileStorage::remountsSticks()) return {};
  const std::string volumeRoot = FileStorage::root() + volumeDirectory(volume);
  std::error_code ec;
  if (!std::filesystem::is_directory(volumeRoot, ec)) return {};
  return volumeRoot + "/.uploads";
}

void FileHandlerHelpers::saveFile(const web::HttpFile& file, int fileType, int volume, bool skip) {
  std::unique_ptr<IUsbMount> mount = FileStorage::makeUsbMount();
  saveFile(file, fileType, volume, skip, *mount);
}

void FileHandlerHelpers::saveFile(const web::HttpFile& file, int fileType, int volume, bool skip,
                                  IUsbMount& mount) {
  const std::string volumeRoot = FileStorage::root() + volumeDirectory(volume);
  const std::string target = targetDirectory(fileType, volume);
  if (skip) return;
  // Sticks (every volume above the on-board one) are remounted as a whole, not the folder.
  const bool remounted = volume > protobuf::ONBOARD_FILESYSTEM;
  if (remounted && !mount.remountReadWrite(volumeRoot)) {
    throw std::runtime_error("Unable to remount " + volumeRoot + " in read/write mode!");
  }
  ReadOnlyAgain readOnlyAgain(mount, volumeRoot, remounted);
  std::error_code ignored;
  std::filesystem::create_directories(target, ignored);
  // The result of the write is not trusted: the size on disk below is the check.
  (void)file.save(target);
  const std::string path = target + "/" + file.getFileName();
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) {
    throw std::runtime_error("Failed to get file info for " + path);
  }
  const auto onDisk = static_cast<unsigned long long>(status.st_size);
  const auto uploaded = static_cast<unsigned long long>(file.fileLength());
  if (onDisk == uploaded) return;
  if (std::remove(path.c_str()) != 0) {
    throw std::runtime_error("File size mismatch and failed to remove file: " + path);
  }
  throw std::runtime_error("File size mismatch: Uploaded file size is " + std::to_string(uploaded) +
                           ", but size on disk is " + std::to_string(onDisk) + ", removed");
}

std::shared_ptr<protobuf::MountedStorageVolumes> FileHandlerHelpers::getStorageVolumesForFileType(
    const web::HttpRequestPtr& req, tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
    const std::string& sessionId, const std::string& fileTypeWord_) {
  const tavelabi::Resource answer =
      HostReads::read(req, tavel, info, sessionId, kMountedVolumesPath);
  auto found = answer.values.find(fileTypeWord_);
  if (found == answer.values.end()) throw UnknownFileType(fileTypeWord_);
  auto volumes = std::make_shared<protobuf::MountedStorageVolumes>();
  for (const tavelabi::ResourceValue& name : found->second.getListValue()) {
    protobuf::TargetStorageVolume volume{};
    if (!protobuf::TargetStorageVolume_Parse(name.getStringValue(), &volume)) {
      volume = protobuf::UNKNOWN_VOLUME;
    }
    volumes->add_volumes(volume);
  }
  return volumes;
}

bool FileHandlerHelpers::volumeIsMounted(const web::HttpRequestPtr& req,
                                         const std::string& volumeName,
                                         const std::string& fileTypeName, tavelabi::ITavel* tavel,
                                         tavelabi::IPluginInfo* info,
                                         const std::string& sessionId) {
  const tavelabi::Resource answer =
      HostReads::read(req, tavel, info, sessionId, kMountedVolumesPath);
  auto found = answer.values.find(fileTypeName);
  if (found == answer.values.end()) throw FileTypeHasNoStorageVolumes(fileTypeName);
  bool mounted = false;
  for (const tavelabi::ResourceValue& name : found->second.getListValue()) {
    if (name.getStringValue() == volumeName) mounted = true;
  }
  return mounted;
}

protobuf::File FileHandlerHelpers::generateFileMessage(const std::string& fileGuid,
                                                       const tavelabi::ResourceValue& entry) {
  const tavelabi::ResourceValue::Map& values = entry.getMapValue();
  protobuf::File file;
  file.mutable_fileguid()->set_value(fileGuid);
  file.mutable_filename()->set_value(values.at("fileName").getStringValue());
  file.mutable_filesize()->set_value(values.at("fileSize").getIntValue());
  file.set_filetypeid(static_cast<protobuf::FileType>(values.at("fileTypeId").getIntValue()));
  file.set_targetmountedvolume(
      static_cast<protobuf::TargetStorageVolume>(values.at("targetMountedVolume").getIntValue()));
  file.mutable_fileduration()->set_value(values.at("fileDuration").getIntValue());
  return file;
}

protobuf::File FileHandlerHelpers::getFile(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                                           tavelabi::IPluginInfo* info,
                                           const std::string& sessionId,
                                           const std::string& fileGuid) {
  const tavelabi::Resource answer = HostReads::read(req, tavel, info, sessionId, kFileListPath);
  for (const tavelabi::ResourceValue& entry : answer.values.at("value").getListValue()) {
    const tavelabi::ResourceValue::Map& values = entry.getMapValue();
    if (values.at("fileGuid").getStringValue() == fileGuid) {
      return generateFileMessage(fileGuid, entry);
    }
  }
  return {};
}

std::shared_ptr<protobuf::FileList> FileHandlerHelpers::getFileList(const web::HttpRequestPtr& req,
                                                                    tavelabi::ITavel* tavel,
                                                                    tavelabi::IPluginInfo* info,
                                                                    const std::string& sessionId,
                                                                    const std::string& listPath) {
  const tavelabi::Resource answer = HostReads::read(req, tavel, info, sessionId, listPath);
  auto files = std::make_shared<protobuf::FileList>();
  for (const tavelabi::ResourceValue& entry : answer.values.at("value").getListValue()) {
    const std::string& guid = entry.getMapValue().at("fileGuid").getStringValue();
    *files->add_files() = generateFileMessage(guid, entry);
  }
  return files;
}

}  // namespace halvor::kelo
