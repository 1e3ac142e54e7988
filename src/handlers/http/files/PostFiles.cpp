#include "kelo/handlers/http/files/PostFiles.h"

#include <stdexcept>
#include <vector>

#include "kelo/handlers/certificates/CertificateFilesError.h"
#include "kelo/handlers/http/files/FileExceptions.h"
#include "kelo/handlers/http/files/FileHandlerHelpers.h"
#include "kelo/handlers/http/files/FileStorage.h"
#include "kelo/handlers/toolkit/HandlerToolkit.h"
#include "kelo/web/MultiPartParser.h"

namespace halvor::kelo {
namespace {

// A name that could leave the target directory is refused before anything is written, so that
// no file of the upload reaches the disk.
void refuseUnsafeNames(const std::vector<web::HttpFile>& files) {
  for (const web::HttpFile& file : files) {
    if (!web::HttpFile::isSafeFileName(file.getFileName())) {
      throw std::runtime_error("Invalid file name: " + file.getFileName());
    }
  }
}

// The host checks the uploaded certificate files and, when they fit, installs them.
void applyUploadedCertificates(const web::HttpRequestPtr& req, tavelabi::ITavel* tavel,
                               tavelabi::IPluginInfo* info, const std::string& sessionId) {
  tavelabi::Resource request;
  request.addValue("uploadTarget",
                   tavelabi::ResourceValue(FileStorage::uploadedCertificatesDirectory()));
  request.addValue("password", tavelabi::ResourceValue(std::string()));
  KeloResourceAction action(tavelabi::CCRUD::Command, "/command/applyCertificate", request, info,
                            sessionId, req);
  const tavelabi::Resource answer = tavel->processResourceAction(action);
  auto message = answer.values.find("errorMessage");
  if (message != answer.values.end()) {
    throw CertificateFilesError("Certificate files error: " + message->second.getStringValue());
  }
}

// The file parts of a body the server streamed by part lie in temporary files of their own
// until the request goes, which may be after the answer was sent. Once the upload is handled,
// either way, they are given back, so that the answer finds no temporary file left.
class StreamedPartsRelease {
 public:
  explicit StreamedPartsRelease(const web::HttpRequestPtr& req) : req_(req) {}
  ~StreamedPartsRelease() { req_->setStreamedForm(nullptr); }
  StreamedPartsRelease(const StreamedPartsRelease&) = delete;
  StreamedPartsRelease& operator=(const StreamedPartsRelease&) = delete;

 private:
  const web::HttpRequestPtr& req_;
};

}  // namespace

void PostFiles::uploadFiles(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                            tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                            std::string sessionId, std::string fileType) {
  postFiles(req, resp, fileType, tavel, info, sessionId, false);
}

void PostFiles::postFiles(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          const std::string& fileType, tavelabi::ITavel* tavel,
                          tavelabi::IPluginInfo* info, const std::string& sessionId, bool skip) {
  const StreamedPartsRelease release(req);
  const std::string volumeName = QueryParameters::required(req, "targetMountedVolume");
  if (!FileHandlerHelpers::validTargetStorageVolume(volumeName)) {
    throw UnknownStorageVolume(volumeName);
  }
  const int type = FileHandlerHelpers::getFileTypeFromString(fileType);
  protobuf::TargetStorageVolume volume{};
  protobuf::TargetStorageVolume_Parse(volumeName, &volume);
  if (type == protobuf::AUDIO && volume == protobuf::ONBOARD_FILESYSTEM) {
    throw std::runtime_error("Cannot upload audio files to onboard storage!");
  }
  const std::string typeName = protobuf::FileType_Name(static_cast<protobuf::FileType>(type));
  if (!FileHandlerHelpers::volumeIsMounted(req, volumeName, typeName, tavel, info, sessionId)) {
    throw VolumeNotMounted(volumeName);
  }
  std::vector<web::HttpFile> files;
  {
    web::MultiPartParser parser;
    (void)parser.parse(req);  // a body that is not multipart has no files
    files = parser.getFiles();
  }
  if (files.empty()) throw std::runtime_error("No files uploaded or files are empty.");
  refuseUnsafeNames(files);
  for (const web::HttpFile& file : files) {
    if (file.fileLength() == 0) throw std::runtime_error("Uploaded file is empty or invalid.");
    FileHandlerHelpers::saveFile(file, type, volume, skip);
  }
  // Makes the host scan for the new files; its answer says nothing more.
  KeloResourceAction scan(tavelabi::CCRUD::Command, FileHandlerHelpers::kUploadCommandPath,
                          tavelabi::Resource(), info, sessionId, req);
  (void)tavel->processResourceAction(scan);
  if (type == protobuf::KELO_CERTIFICATE) applyUploadedCertificates(req, tavel, info, sessionId);
  resp->setStatusCode(200);
}

}  // namespace halvor::kelo
