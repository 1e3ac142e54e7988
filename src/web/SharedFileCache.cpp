#include "SharedFileCache.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

namespace halvor::kelo::web {

bool SharedFileCache::Identity::operator==(const Identity& other) const {
  return device == other.device && inode == other.inode && size == other.size &&
         modified.tv_sec == other.modified.tv_sec && modified.tv_nsec == other.modified.tv_nsec;
}

std::shared_ptr<const std::string> SharedFileCache::get(const std::string& path) {
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0) return nullptr;
  Identity now{info.st_dev, info.st_ino, info.st_size, info.st_mtim};
  {
    std::lock_guard lock(mutex_);
    auto found = entries_.find(path);
    if (found != entries_.end() && found->second.identity == now) {
      if (auto content = found->second.content.lock()) return content;
    }
  }
  // Read outside the lock: other files are served meanwhile. Two readers of one new file may
  // both read it; the later entry wins and the other copy goes with its responses.
  Identity identity;
  std::shared_ptr<const std::string> content = read(path, identity);
  if (!content) return nullptr;
  std::lock_guard lock(mutex_);
  entries_[path] = Entry{identity, content};
  if (entries_.size() >= sweepAt_) sweep();
  return content;
}

// The identity is taken from the open descriptor, so that it is the one of what was read.
std::shared_ptr<const std::string> SharedFileCache::read(const std::string& path,
                                                         Identity& identity) {
  int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return nullptr;
  struct stat info {};
  if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
    ::close(fd);
    return nullptr;
  }
  identity = Identity{info.st_dev, info.st_ino, info.st_size, info.st_mtim};
  std::string content(static_cast<std::size_t>(info.st_size), '\0');
  std::size_t done = 0;
  while (done < content.size()) {
    ssize_t got = ::read(fd, content.data() + done, content.size() - done);
    if (got < 0) {
      ::close(fd);
      return nullptr;
    }
    if (got == 0) break;  // shrank while read: what is there
    done += static_cast<std::size_t>(got);
  }
  ::close(fd);
  content.resize(done);
  return std::make_shared<const std::string>(std::move(content));
}

void SharedFileCache::sweep() {
  for (auto it = entries_.begin(); it != entries_.end();) {
    if (it->second.content.expired()) {
      it = entries_.erase(it);
    } else {
      ++it;
    }
  }
  sweepAt_ = std::max<std::size_t>(64, entries_.size() * 2);
}

}  // namespace halvor::kelo::web
