#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kelo/web/HttpFile.h"
#include "kelo/web/HttpRequest.h"

namespace halvor::kelo::web {

// Splits a multipart/form-data body into form fields and files. The body is taken whole
// (parse) or fed in pieces of any size as it arrives (begin, feed, finish); both give the same
// parts. Fields are kept in memory; the content of a file part is, without a PartStore, a view
// into the body, and with one, written to the store as it comes.
class MultiPartParser {
 public:
  // Where the content of file parts goes while the body is fed in pieces.
  class PartStore {
   public:
    virtual ~PartStore() = default;
    // A file part begins; false refuses it (the feed fails).
    virtual bool open() = 0;
    // More of its content; false when it cannot be kept (the feed fails).
    virtual bool write(std::string_view bytes) = 0;
    // The part is complete: the file that holds it, or nullptr when it could not be kept.
    virtual std::shared_ptr<const HttpFile::Spool> close() = 0;
  };

  MultiPartParser();
  ~MultiPartParser();
  MultiPartParser(MultiPartParser&&) noexcept;
  MultiPartParser& operator=(MultiPartParser&&) noexcept;

  // 0 on success; -1 when the request is not multipart/form-data, has no boundary, or the body
  // is malformed (no closing boundary, a part without Content-Disposition or name, ...); the
  // parts before the fault are kept. Works on bodies in memory, bodies in a temporary file and
  // bodies the server already streamed by part as they arrived.
  int parse(const HttpRequestPtr& req);

  // The boundary of a "multipart/form-data; boundary=..." content type; "" for any other type
  // or when the boundary is absent or empty.
  static std::string boundaryOf(std::string_view contentType);

  // Feeding in pieces: begin with the boundary, feed the body's bytes as they come, finish at
  // its end. `store` (may be null) takes the content of file parts; `maxFieldBytes` (0: no
  // limit) bounds the bytes that fields and part headers may hold in memory together.
  void begin(std::string boundary, std::unique_ptr<PartStore> store = nullptr,
             std::size_t maxFieldBytes = 0);
  // False once the body is malformed (the rest of it is then ignored) or the store or the
  // field limit refused bytes (see overLimit()).
  bool feed(std::string_view bytes);
  // 0 when the closing delimiter was seen and nothing failed; -1 otherwise. A part that was
  // not complete is dropped.
  int finish();
  // True when the feed failed because fields passed maxFieldBytes or the store refused bytes.
  bool overLimit() const { return overLimit_; }

  // Fields without a file name, by field name (the last one wins for repeated names).
  const std::map<std::string, std::string>& getParameters() const { return parameters_; }
  // "" when absent.
  const std::string& getParameter(std::string_view name) const;
  // Parts with a filename attribute, in body order, empty files included.
  const std::vector<HttpFile>& getFiles() const { return files_; }

 private:
  enum class State { Preamble, AfterDelimiter, Headers, Content, Done, Failed };

  std::size_t step(std::string_view in);
  std::size_t findPreamble(std::string_view in);
  std::size_t readDelimiterEnd(std::string_view in);
  std::size_t readHeaders(std::string_view in);
  std::size_t readContent(std::string_view in);
  bool startPart(std::string_view headers);
  bool addContent(std::string_view bytes);
  bool endPart();
  bool fail(bool overLimit = false);
  bool countFieldBytes(std::size_t bytes);

  std::map<std::string, std::string> parameters_;
  std::vector<HttpFile> files_;

  // The state of a feed.
  State state_ = State::Failed;
  std::string delimiter_;  // "--" boundary
  std::string separator_;  // CRLF "--" boundary
  std::string pending_;    // bytes fed but not decided yet (a possible delimiter, a header)
  std::unique_ptr<PartStore> store_;
  std::size_t maxFieldBytes_ = 0;
  std::size_t fieldBytes_ = 0;
  bool overLimit_ = false;
  // The part being read.
  std::string itemName_;
  std::string fileName_;
  std::string partType_;
  bool isFile_ = false;
  std::string field_;
  // Without a store, a file's content is a view into the fed bytes while it comes in one
  // piece, else a copy; `keepAlive_` is what the views need alive.
  std::string_view view_;
  std::shared_ptr<std::string> copy_;
  std::shared_ptr<const void> keepAlive_;
  std::string sourcePath_;
  const char* sourceBase_ = nullptr;
  // A body mapped from its temporary file gives back the pages searched.
  bool releasePages_ = false;
};

}  // namespace halvor::kelo::web
