#pragma once

#include <sys/types.h>

#include <cstddef>
#include <ctime>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>

namespace halvor::kelo::web {

// Whole files read once and shared, read-only, by every response that sends them, so that N
// clients reading the same file slowly cost one copy of it, not N. An entry lives as long as a
// response holds it; a file that changed on disk (identity, size or time) is read anew. Safe
// from any thread.
class SharedFileCache {
 public:
  // The content of `path`; nullptr when it cannot be read.
  std::shared_ptr<const std::string> get(const std::string& path);

 private:
  struct Identity {
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = 0;
    std::timespec modified{};
    bool operator==(const Identity& other) const;
  };
  struct Entry {
    Identity identity;
    std::weak_ptr<const std::string> content;
  };

  static std::shared_ptr<const std::string> read(const std::string& path, Identity& identity);
  // Forgets entries no response holds any more; called as the table grows.
  void sweep();

  std::mutex mutex_;
  std::unordered_map<std::string, Entry> entries_;
  std::size_t sweepAt_ = 64;
};

}  // namespace halvor::kelo::web
