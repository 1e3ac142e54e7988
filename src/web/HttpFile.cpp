#include "kelo/web/HttpFile.h"

#include <filesystem>
#include <fstream>

namespace halvor::kelo::web {

HttpFile::HttpFile(std::string itemName, std::string fileName, std::string contentType,
                   std::string_view content, std::shared_ptr<const void> keepAlive)
    : itemName_(std::move(itemName)),
      fileName_(std::move(fileName)),
      contentType_(std::move(contentType)),
      content_(content),
      keepAlive_(std::move(keepAlive)) {}

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

int HttpFile::saveAs(const std::string& path) const {
  std::filesystem::path target(path);
  if (target.has_parent_path()) {
    std::error_code ec;
    std::filesystem::create_directories(target.parent_path(), ec);
    if (ec) return -1;
  }
  std::ofstream out(target, std::ios::binary | std::ios::trunc);
  if (!out) return -1;
  out.write(content_.data(), static_cast<std::streamsize>(content_.size()));
  out.close();
  return out ? 0 : -1;
}

}  // namespace halvor::kelo::web
