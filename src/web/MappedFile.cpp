#include "MappedFile.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace halvor::kelo::web {

MappedFile::MappedFile(const std::string& path) {
  int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return;
  struct stat info {};
  if (::fstat(fd, &info) == 0 && info.st_size > 0) {
    void* data =
        ::mmap(nullptr, static_cast<std::size_t>(info.st_size), PROT_READ, MAP_PRIVATE, fd, 0);
    if (data != MAP_FAILED) {
      data_ = data;
      size_ = static_cast<std::size_t>(info.st_size);
    }
  }
  ::close(fd);
}

MappedFile::~MappedFile() {
  if (data_ != nullptr) ::munmap(data_, size_);
}

}  // namespace halvor::kelo::web
