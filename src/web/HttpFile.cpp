#include "kelo/web/HttpFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <filesystem>

#include "MappedFile.h"

namespace halvor::kelo::web {

HttpFile::Spool::Spool(std::string path, std::size_t length, std::shared_ptr<const void> lease)
    : path_(std::move(path)), length_(length), lease_(std::move(lease)) {}

HttpFile::Spool::~Spool() {
  mapped_.reset();
  std::remove(path_.c_str());
}

std::string_view HttpFile::Spool::content() const {
  if (length_ == 0) return {};
  std::call_once(mapOnce_, [this] { mapped_ = std::make_unique<MappedFile>(path_); });
  return mapped_->view();
}

HttpFile::HttpFile(std::string itemName, std::string fileName, std::string contentType,
                   std::string_view content, std::shared_ptr<const void> keepAlive)
    : itemName_(std::move(itemName)),
      fileName_(std::move(fileName)),
      contentType_(std::move(contentType)),
      content_(content),
      keepAlive_(std::move(keepAlive)) {}

HttpFile::HttpFile(std::string itemName, std::string fileName, std::string contentType,
                   std::shared_ptr<const Spool> spool)
    : itemName_(std::move(itemName)),
      fileName_(std::move(fileName)),
      contentType_(std::move(contentType)),
      spool_(std::move(spool)),
      sourcePath_(spool_->path()) {}

std::string HttpFile::getFileExtension() const {
  std::size_t dot = fileName_.rfind('.');
  if (dot == std::string::npos || dot + 1 == fileName_.size()) return {};
  return fileName_.substr(dot + 1);
}

bool HttpFile::isSafeFileName(std::string_view name) {
  if (name.empty() || name == "." || name == "..") return false;
  if (name.find("..") != std::string_view::npos) return false;
  for (char c : name) {
    if (c == '/' || c == '\\' || c == '\0') return false;
  }
  return true;
}

int HttpFile::save(const std::string& directory) const {
  if (!isSafeFileName(fileName_)) return -1;
  std::error_code ec;
  std::filesystem::create_directories(directory, ec);
  if (ec) return -1;
  return saveAs((std::filesystem::path(directory) / fileName_).string());
}

void HttpFile::setSourceFile(std::string path, std::size_t offset) {
  sourcePath_ = std::move(path);
  sourceOffset_ = offset;
}

int HttpFile::saveAs(const std::string& path) const {
  std::filesystem::path target(path);
  if (target.has_parent_path()) {
    std::error_code ec;
    std::filesystem::create_directories(target.parent_path(), ec);
    if (ec) return -1;
  }
  // A name of our own beside the target, unique within the process and across processes.
  static std::atomic<unsigned long> counter{0};
  std::filesystem::path partial = target;
  partial.replace_filename("." + target.filename().string() + "." + std::to_string(::getpid()) +
                           "-" + std::to_string(++counter) + ".part");
  // A spooled part moves: a second name for its file, renamed onto the target. Where the two
  // folders lie on different file systems (a USB stick), or the file system has no links, the
  // bytes are copied instead.
  if (spool_ && ::link(spool_->path().c_str(), partial.c_str()) == 0) {
    if (::rename(partial.c_str(), target.c_str()) == 0) return 0;
    ::unlink(partial.c_str());
    return -1;
  }
  const int descriptor =
      ::open(partial.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_TRUNC | O_CLOEXEC, 0644);
  if (descriptor < 0) return -1;
  bool written = sourcePath_.empty() ? writeTo(descriptor) : copyFromSource(descriptor);
  if (::close(descriptor) != 0) written = false;
  if (written && ::rename(partial.c_str(), target.c_str()) == 0) return 0;
  ::unlink(partial.c_str());
  return -1;
}

bool HttpFile::writeTo(int descriptor) const {
  std::string_view rest = fileContent();
  while (!rest.empty()) {
    const ssize_t done = ::write(descriptor, rest.data(), rest.size());
    if (done < 0 && errno == EINTR) continue;
    if (done <= 0) return false;
    rest.remove_prefix(static_cast<std::size_t>(done));
  }
  return true;
}

bool HttpFile::copyFromSource(int descriptor) const {
  const int source = ::open(sourcePath_.c_str(), O_RDONLY | O_CLOEXEC);
  if (source < 0) return writeTo(descriptor);
  auto offset = static_cast<off64_t>(sourceOffset_);
  std::size_t left = fileLength();
  bool copied = true;
  while (left > 0) {
    const ssize_t done = ::copy_file_range(source, &offset, descriptor, nullptr, left, 0);
    if (done < 0 && errno == EINTR) continue;
    if (done <= 0) {
      copied = false;
      break;
    }
    left -= static_cast<std::size_t>(done);
  }
  ::close(source);
  // A file system that cannot copy between these files gets the bytes the ordinary way.
  if (!copied && left == fileLength()) return writeTo(descriptor);
  return copied;
}

}  // namespace halvor::kelo::web
