// The upload path end to end. The fuzzer's bytes are one HTTP request, read by the web layer's
// request parser in pieces (a multipart body above the memory limit streamed by part, its file
// parts spooled where the files family's chooser says), then, for "POST /1/api/files/{type}",
// taken through the upload handler's steps in their order, down to FileHandlerHelpers::saveFile
// with a fake USB mount. The storage root is a temporary folder with the on-board volume and two
// sticks. The first input byte picks the size of the pieces and whether sticks are remounted.
//
// Properties checked after every input (abort when broken):
// - every file written lies directly in a target folder under the storage root, and nothing
//   appears anywhere else in the work folder (the temporary folder of body files included);
// - no spooled part is left in a ".uploads" folder, and the disk budget is back to zero;
// - a stick made writable is read-only again, whatever the upload's outcome.
#include <unistd.h>

#include <boost/asio/buffer.hpp>
#include <boost/beast/http/error.hpp>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "DiskBudget.h"
#include "RequestParser.h"
#include "halvor/protobuf/Files.pb.h"
#include "kelo/handlers/http/files/FileHandlerHelpers.h"
#include "kelo/handlers/http/files/FileStorage.h"
#include "kelo/handlers/http/files/IUsbMount.h"
#include "kelo/web/HttpRequest.h"
#include "kelo/web/MultiPartParser.h"

using namespace halvor::kelo;
namespace protobuf = halvor::protobuf;
namespace fs = std::filesystem;

namespace {

// Sticks are folders; a remount only counts.
class FakeUsbMount : public IUsbMount {
 public:
  bool usbIsMounted(const std::string&) override { return true; }
  bool remountReadWrite(const std::string&) override {
    ++writable;
    return true;
  }
  bool remountReadOnly(const std::string&) override {
    --writable;
    return true;
  }
  int writable = 0;
};

struct Work {
  Work() {
    char pattern[] = "/tmp/kelo-fuzz-upload-XXXXXX";
    if (::mkdtemp(pattern) == nullptr) std::abort();
    folder = pattern;
    root = folder / "root";
    temporary = folder / "tmp";
    fs::create_directories(temporary);
    budget->configure(256 * 1024);
    choosers.emplace_back(&FileHandlerHelpers::uploadSpoolDirectory);
  }
  ~Work() {
    std::error_code ignored;
    fs::remove_all(folder, ignored);
  }

  // The storage root as an upload finds it: the on-board folder and two sticks, nothing else.
  // Made anew only after an input wrote something there.
  void resetRoot(bool remount) {
    if (dirty || !fs::exists(root)) {
      std::error_code ignored;
      fs::remove_all(root, ignored);
      fs::create_directories(root / "data/halvor/files");
      fs::create_directories(root / "mnt/USB");
      fs::create_directories(root / "mnt/USB-A");
      dirty = false;
    }
    if (!configured || remount != remounts) FileStorage::configure(root.string(), remount);
    configured = true;
    remounts = remount;
  }
  bool dirty = true;
  bool configured = false;
  bool remounts = false;

  fs::path folder;
  fs::path root;
  fs::path temporary;
  std::shared_ptr<web::DiskBudget> budget = std::make_shared<web::DiskBudget>();
  std::vector<std::function<std::string(const web::HttpRequest&)>> choosers;
};

Work& work() {
  static Work shared;
  return shared;
}

// Reads the request as a connection does: piece by piece, what the parser did not take kept
// for the next piece. True when a complete request was read.
bool readRequest(web::RequestParser& parser, std::string_view input, std::size_t piece) {
  std::string pending;
  while (!parser.is_done()) {
    if (input.empty()) return false;
    const std::size_t length = std::min(piece, input.size());
    pending.append(input.substr(0, length));
    input.remove_prefix(length);
    boost::beast::error_code ec;
    const std::size_t used = parser.put(boost::asio::buffer(pending), ec);
    pending.erase(0, used);
    if (ec && ec != boost::beast::http::error::need_more) return false;
  }
  return true;
}

// The upload handler's steps after the host's mount check, in their order: volume, type, audio
// not on board, the parts, no file, an unsafe name refusing the whole upload, an empty file,
// each file saved.
void upload(const web::HttpRequestPtr& req, IUsbMount& mount) {
  static const std::string prefix = "/1/api/files/";
  if (req->method() != web::Post || req->path().rfind(prefix, 0) != 0) return;
  const std::string volumeName = req->getParameter("targetMountedVolume");
  if (!FileHandlerHelpers::validTargetStorageVolume(volumeName)) return;
  const int type = FileHandlerHelpers::getFileTypeFromString(req->path().substr(prefix.size()));
  protobuf::TargetStorageVolume volume{};
  protobuf::TargetStorageVolume_Parse(volumeName, &volume);
  if (type == protobuf::AUDIO && volume == protobuf::ONBOARD_FILESYSTEM) return;
  web::MultiPartParser parser;
  (void)parser.parse(req);
  const std::vector<web::HttpFile> files = parser.getFiles();
  if (files.empty()) return;
  for (const web::HttpFile& file : files) {
    if (!web::HttpFile::isSafeFileName(file.getFileName())) return;
  }
  for (const web::HttpFile& file : files) {
    if (file.fileLength() == 0) return;
    FileHandlerHelpers::saveFile(file, type, volume, false, mount);
  }
}

// Entries under the work folder when nothing was written: tmp, root, root/data,
// root/data/halvor, root/data/halvor/files, root/mnt, root/mnt/USB, root/mnt/USB-A.
constexpr std::size_t kCleanEntries = 8;

// The folders an upload may write to: each type's folder on each volume.
bool isTargetFolder(const fs::path& folder) {
  for (int volume = protobuf::TargetStorageVolume_MIN; volume <= protobuf::TargetStorageVolume_MAX;
       ++volume) {
    for (int type : {protobuf::AUDIO, protobuf::UPGRADE_FILE, protobuf::KELO_CERTIFICATE,
                     protobuf::ZEPHLINK_CERTIFICATE}) {
      if (folder == fs::path(FileHandlerHelpers::targetDirectory(type, volume))) return true;
    }
  }
  return false;
}

// A hidden file of a save that was not renamed: ".<name>.<pid>-<n>.part".
bool isPartialSave(const std::string& name) {
  static const std::string marker = "." + std::to_string(::getpid()) + "-";
  return name.size() > 5 && name.compare(name.size() - 5, 5, ".part") == 0 &&
         name.find(marker) != std::string::npos;
}

// Nothing outside the target folders, no spooled part, no body file, no partial save.
void checkWorkFolder() {
  std::size_t entries = 0;
  for (auto it = fs::recursive_directory_iterator(work().folder);
       it != fs::recursive_directory_iterator(); ++it) {
    ++entries;
    if (it->is_directory()) continue;
    const fs::path& path = it->path();
    if (!it->is_regular_file() || !isTargetFolder(path.parent_path()) ||
        isPartialSave(path.filename().string())) {
      std::fprintf(stderr, "written outside the target folders: %s\n", path.c_str());
      std::abort();
    }
  }
  // The work folder, "tmp", "root" and the three volume folders with their parents.
  if (entries != kCleanEntries) work().dirty = true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  Work& shared = work();
  const std::size_t piece = 1 + (data[0] & 0x7f) * 97;
  shared.resetRoot((data[0] & 0x80) != 0);
  static const std::string temporary = shared.temporary.string();
  FakeUsbMount mount;
  {
    auto req = std::make_shared<web::HttpRequest>();
    bool complete = false;
    web::RequestParser::Limits limits;
    limits.maxMemoryBody = 1024;
    limits.maxDiskBody = 128 * 1024;
    limits.diskBudget = shared.budget;
    limits.uploadDirectories = &shared.choosers;
    {
      web::RequestParser parser(*req, limits, temporary);
      parser.header_limit(16 * 1024);
      parser.body_limit(128 * 1024);
      parser.eager(true);
      const std::string_view input(reinterpret_cast<const char*>(data) + 1, size - 1);
      complete = readRequest(parser, input, piece);
    }
    try {
      if (complete) upload(req, mount);
    } catch (const std::exception&) {
      // The handler's refusals (unknown type, failed save) are answers, not faults.
    }
  }
  if (mount.writable != 0) {
    std::fprintf(stderr, "a stick was left writable\n");
    std::abort();
  }
  if (shared.budget->used() != 0) {
    std::fprintf(stderr, "the disk budget still holds %llu bytes\n",
                 static_cast<unsigned long long>(shared.budget->used()));
    std::abort();
  }
  checkWorkFolder();
  return 0;
}
