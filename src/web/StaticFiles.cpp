#include "StaticFiles.h"

#include <array>
#include <cctype>
#include <filesystem>

namespace halvor::kelo::web {
namespace fs = std::filesystem;

namespace {

std::string lowerExtension(std::string_view fileName) {
  std::size_t dot = fileName.rfind('.');
  if (dot == std::string_view::npos) return {};
  std::string extension(fileName.substr(dot + 1));
  for (char& c : extension) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return extension;
}

}  // namespace

StaticFiles::StaticFiles(const std::string& documentRoot, std::vector<std::string> fileTypes)
    : fileTypes_(std::move(fileTypes)) {
  std::error_code ec;
  fs::path root = fs::canonical(documentRoot.empty() ? "." : documentRoot, ec);
  if (!ec && fs::is_directory(root, ec)) {
    root_ = root.string();
    while (root_.size() > 1 && root_.back() == '/') root_.pop_back();
  }
}

bool StaticFiles::isNeverServed(std::string_view extension) {
  static constexpr std::array<std::string_view, 5> kNever = {"json", "key", "crt", "pem", "log"};
  for (std::string_view never : kNever) {
    if (never == extension) return true;
  }
  return false;
}

bool StaticFiles::admitsExtension(std::string_view fileName) const {
  std::string extension = lowerExtension(fileName);
  if (extension.empty() || isNeverServed(extension)) return false;
  for (const std::string& type : fileTypes_) {
    if (type == extension) return true;
  }
  return false;
}

std::string StaticFiles::resolve(std::string_view decodedPath) const {
  if (root_.empty()) return {};
  if (decodedPath.find('\0') != std::string_view::npos ||
      decodedPath.find('\\') != std::string_view::npos) {
    return {};
  }
  // Resolve "." and ".." on the text first: a path that climbs above the root is refused even
  // when it would come back down into it.
  std::vector<std::string_view> segments;
  std::size_t at = 0;
  while (at <= decodedPath.size()) {
    std::size_t end = decodedPath.find('/', at);
    if (end == std::string_view::npos) end = decodedPath.size();
    std::string_view segment = decodedPath.substr(at, end - at);
    at = end + 1;
    if (segment.empty() || segment == ".") continue;
    if (segment == "..") {
      if (segments.empty()) return {};
      segments.pop_back();
      continue;
    }
    segments.push_back(segment);
  }
  fs::path candidate(root_);
  for (std::string_view segment : segments) candidate /= fs::path(std::string(segment));
  std::error_code ec;
  if (segments.empty() || fs::is_directory(candidate, ec)) candidate /= "index.html";
  if (!admitsExtension(candidate.filename().string())) return {};

  // Symbolic links may still lead out of the root: check where the file really is.
  fs::path real = fs::canonical(candidate, ec);
  if (ec || !fs::is_regular_file(real, ec)) return {};
  std::string realText = real.string();
  std::string prefix = root_ == "/" ? root_ : root_ + "/";
  if (realText.compare(0, prefix.size(), prefix) != 0) return {};
  if (!admitsExtension(real.filename().string())) return {};
  return realText;
}

bool StaticFiles::load(const std::string& file, HttpResponse& response) {
  std::shared_ptr<const std::string> content = cache_.get(file);
  if (!content) return false;
  response.setStatusCode(k200OK);
  response.setContentTypeCode(contentTypeForExtension(lowerExtension(file)));
  response.setSharedBody(std::move(content));
  return true;
}

}  // namespace halvor::kelo::web
