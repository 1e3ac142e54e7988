#include "PartSpool.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <vector>

namespace halvor::kelo::web {

PartSpool::PartSpool(std::string directory, std::string fallbackDirectory,
                     std::shared_ptr<DiskBudget::Lease> lease, std::uint64_t maxBytes)
    : directory_(std::move(directory)),
      fallbackDirectory_(std::move(fallbackDirectory)),
      lease_(std::move(lease)),
      maxBytes_(maxBytes) {}

PartSpool::~PartSpool() { discard(); }

bool PartSpool::open() {
  discard();
  if (!directory_.empty() && openIn(directory_)) return true;
  return openIn(fallbackDirectory_);
}

// A name of its own in `directory`, which is made (for this process's user only) when missing;
// its parent must exist (a folder of a volume that is not there is not made). The file gets the
// mode of a saved upload, since a move keeps it.
bool PartSpool::openIn(const std::string& directory) {
  std::error_code ignored;
  if (std::filesystem::create_directory(directory, ignored)) {
    std::filesystem::permissions(directory, std::filesystem::perms::owner_all,
                                 std::filesystem::perm_options::replace, ignored);
  }
  const std::string pattern = directory + "/kelo-part-XXXXXX";
  std::vector<char> name(pattern.begin(), pattern.end());
  name.push_back('\0');
  descriptor_ = ::mkostemp(name.data(), O_CLOEXEC);
  if (descriptor_ < 0) return false;
  path_ = name.data();
  length_ = 0;
  (void)::fchmod(descriptor_, 0644);
  return true;
}

// Within the body's own limit and the budget of all body files, or not at all.
bool PartSpool::write(std::string_view bytes) {
  if (descriptor_ < 0) return false;
  if (bytes.empty()) return true;
  if (total_ + bytes.size() > maxBytes_ || !lease_->grow(bytes.size())) return false;
  total_ += bytes.size();
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(written));
    length_ += static_cast<std::uint64_t>(written);
  }
  return true;
}

std::shared_ptr<const HttpFile::Spool> PartSpool::close() {
  if (descriptor_ < 0) return nullptr;
  const bool closed = ::close(descriptor_) == 0;
  descriptor_ = -1;
  if (!closed) {
    discard();
    return nullptr;
  }
  auto spool =
      std::make_shared<const HttpFile::Spool>(std::move(path_), static_cast<std::size_t>(length_),
                                              std::static_pointer_cast<const void>(lease_));
  path_.clear();
  return spool;
}

void PartSpool::discard() {
  if (descriptor_ >= 0) {
    ::close(descriptor_);
    descriptor_ = -1;
  }
  if (!path_.empty()) {
    std::remove(path_.c_str());
    path_.clear();
  }
}

}  // namespace halvor::kelo::web
