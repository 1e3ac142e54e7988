#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace halvor::kelo::web {

// A whole file mapped read-only into memory.
class MappedFile {
 public:
  // Maps `path`; an empty or unreadable file gives an empty view.
  explicit MappedFile(const std::string& path);
  ~MappedFile();
  MappedFile(const MappedFile&) = delete;
  MappedFile& operator=(const MappedFile&) = delete;

  std::string_view view() const { return {static_cast<const char*>(data_), size_}; }

 private:
  void* data_ = nullptr;
  std::size_t size_ = 0;
};

}  // namespace halvor::kelo::web
