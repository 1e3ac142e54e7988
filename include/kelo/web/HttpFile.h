#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace halvor::kelo::web {

// One file part of a multipart/form-data body. Its content is a view into the request's body,
// which the file keeps alive.
class HttpFile {
 public:
  HttpFile(std::string itemName, std::string fileName, std::string contentType,
           std::string_view content, std::shared_ptr<const void> keepAlive);

  // The name of the form field ("file").
  const std::string& getItemName() const { return itemName_; }
  // The file name the client sent, as sent ("report.pdf").
  const std::string& getFileName() const { return fileName_; }
  // "pdf" for "report.pdf"; "" when there is none.
  std::string getFileExtension() const;
  // The part's Content-Type; "" when absent.
  const std::string& getContentType() const { return contentType_; }
  std::size_t fileLength() const { return content_.size(); }
  std::string_view fileContent() const { return content_; }

  // For a body kept in a temporary file: the content also lies in `path` from `offset` on, so
  // that a save copies it inside the kernel instead of through the process's memory.
  void setSourceFile(std::string path, std::size_t offset);

  // Writes the content to `directory`/getFileName(), creating the directory if needed. Refuses
  // (returns -1, writes nothing) when the file name is not safe. 0 on success, -1 on any error.
  int save(const std::string& directory) const;
  // Writes the content to exactly `path`, which the caller chose. 0 on success, -1 on error.
  // The bytes go to a hidden file beside `path` that is renamed onto it when complete, so that
  // a failed write leaves no partial file under the name.
  int saveAs(const std::string& path) const;

  // A name that stays inside the directory it is saved to: not empty, not "." or "..", no "/",
  // "\\", ".." sequence or NUL.
  static bool isSafeFileName(std::string_view name);

 private:
  std::string itemName_;
  std::string fileName_;
  std::string contentType_;
  std::string_view content_;
  std::shared_ptr<const void> keepAlive_;
  std::string sourcePath_;
  std::size_t sourceOffset_ = 0;

  bool writeTo(int descriptor) const;
  bool copyFromSource(int descriptor) const;
};

}  // namespace halvor::kelo::web
