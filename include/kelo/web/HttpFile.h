#pragma once

#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

namespace halvor::kelo::web {

class MappedFile;

// One file part of a multipart/form-data body. Its content is a view into the request's body,
// which the file keeps alive, or a file of its own (a Spool) that the server wrote the part to
// as it arrived.
class HttpFile {
 public:
  // A temporary file that holds exactly one part's content. It is removed when the last HttpFile
  // that refers to it goes; `lease` (the server's disk budget) is released then.
  class Spool {
   public:
    Spool(std::string path, std::size_t length, std::shared_ptr<const void> lease);
    ~Spool();
    Spool(const Spool&) = delete;
    Spool& operator=(const Spool&) = delete;

    const std::string& path() const { return path_; }
    std::size_t length() const { return length_; }
    // The content, mapped on first use.
    std::string_view content() const;

   private:
    std::string path_;
    std::size_t length_;
    std::shared_ptr<const void> lease_;
    mutable std::once_flag mapOnce_;
    mutable std::unique_ptr<MappedFile> mapped_;
  };

  HttpFile(std::string itemName, std::string fileName, std::string contentType,
           std::string_view content, std::shared_ptr<const void> keepAlive);
  HttpFile(std::string itemName, std::string fileName, std::string contentType,
           std::shared_ptr<const Spool> spool);

  // The name of the form field ("file").
  const std::string& getItemName() const { return itemName_; }
  // The file name the client sent, as sent ("report.pdf").
  const std::string& getFileName() const { return fileName_; }
  // "pdf" for "report.pdf"; "" when there is none.
  std::string getFileExtension() const;
  // The part's Content-Type; "" when absent.
  const std::string& getContentType() const { return contentType_; }
  std::size_t fileLength() const { return spool_ ? spool_->length() : content_.size(); }
  // For a spooled part the file is mapped on the first call.
  std::string_view fileContent() const { return spool_ ? spool_->content() : content_; }
  // The temporary file that holds a spooled part; "" for a part held in the body.
  std::string spoolPath() const { return spool_ ? spool_->path() : std::string(); }

  // For a body kept in a temporary file: the content also lies in `path` from `offset` on, so
  // that a save copies it inside the kernel instead of through the process's memory.
  void setSourceFile(std::string path, std::size_t offset);

  // Writes the content to `directory`/getFileName(), creating the directory if needed. Refuses
  // (returns -1, writes nothing) when the file name is not safe. 0 on success, -1 on any error.
  int save(const std::string& directory) const;
  // Writes the content to exactly `path`, which the caller chose. 0 on success, -1 on error.
  // The bytes go to a hidden file beside `path` that is renamed onto it when complete, so that
  // a failed write leaves no partial file under the name. A spooled part on the same file
  // system is not copied at all: its file gets the hidden name as a second link (the same
  // inode), which is then renamed; on another file system it is copied.
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
  std::shared_ptr<const Spool> spool_;
  std::string sourcePath_;
  std::size_t sourceOffset_ = 0;

  bool writeTo(int descriptor) const;
  bool copyFromSource(int descriptor) const;
};

}  // namespace halvor::kelo::web
