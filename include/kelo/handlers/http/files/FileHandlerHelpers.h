#pragma once

#include <memory>
#include <string>

#include "halvor/protobuf/Files.pb.h"
#include "kelo/handlers/http/files/IUsbMount.h"
#include "kelo/web/HttpFile.h"
#include "kelo/web/HttpRequest.h"
#include "tavelabi/IPluginInfo.h"
#include "tavelabi/ITavel.h"
#include "tavelabi/ResourceValue.h"

namespace halvor::kelo {

// File types and storage volumes, the upload's save to disk, and the host's file catalogue.
class FileHandlerHelpers {
 public:
  FileHandlerHelpers() = delete;

  static constexpr const char* kMountedVolumesPath = "/files/mountedVolumes";
  static constexpr const char* kFileListPath = "/files/list";
  static constexpr const char* kUploadCommandPath = "/file/command/upload";
  static constexpr const char* kDeleteCommandPath = "/file/command/delete";

  // The name of a TargetStorageVolume other than UNKNOWN_VOLUME, compared exactly.
  static bool validTargetStorageVolume(const std::string& name);
  // The FileType of a URL word ("audio"); UnknownFileType for any other text.
  static int getFileTypeFromString(const std::string& word);
  // The host's list path of a URL word ("/files/list/audioFiles"); UnknownFileType otherwise.
  static std::string getPathToList(const std::string& fileTypeWord);
  // Where a volume is mounted, without the storage root: USB and anything unknown is "/mnt/USB".
  static std::string volumeDirectory(int volume);
  // The directory a file of this type is written to on this volume, storage root in front.
  static std::string targetDirectory(int fileType, int volume);

  // Where the web layer writes the file parts of an upload while they arrive (for
  // registerUploadDirectory): a hidden folder ".uploads" in the target volume's folder, on the
  // file system of the target, so that saving moves the file instead of copying it. "" (the
  // server's temporary folder, and a copy) for other requests, for a volume whose folder does
  // not exist, and for a stick that is remounted around writes (read-only until then).
  static std::string uploadSpoolDirectory(const web::HttpRequest& req);

  // Writes the upload to its volume, a stick being remounted read/write around the write and
  // always back to read-only before leaving; checks the size on disk. Throws std::runtime_error.
  static void saveFile(const web::HttpFile& file, int fileType, int volume, bool skip);
  static void saveFile(const web::HttpFile& file, int fileType, int volume, bool skip,
                       IUsbMount& mount);

  static std::shared_ptr<protobuf::MountedStorageVolumes> getStorageVolumesForFileType(
      const web::HttpRequestPtr& req, tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
      const std::string& sessionId, const std::string& fileTypeWord);
  static bool volumeIsMounted(const web::HttpRequestPtr& req, const std::string& volumeName,
                              const std::string& fileTypeName, tavelabi::ITavel* tavel,
                              tavelabi::IPluginInfo* info, const std::string& sessionId);
  // A catalogue entry as a File; a missing key throws std::out_of_range.
  static protobuf::File generateFileMessage(const std::string& fileGuid,
                                            const tavelabi::ResourceValue& entry);
  // The file of that guid in "/files/list"; an empty File when there is none.
  static protobuf::File getFile(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                                tavelabi::IPluginInfo* info, const std::string& sessionId,
                                const std::string& fileGuid);
  static std::shared_ptr<protobuf::FileList> getFileList(const web::HttpRequestPtr& req,
                                                         tavelabi::ITavel* tavel,
                                                         tavelabi::IPluginInfo* info,
                                                         const std::string& sessionId,
                                                         const std::string& listPath);
};

}  // namespace halvor::kelo
