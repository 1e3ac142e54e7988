#pragma once

#include <boost/beast/http/basic_parser.hpp>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "DiskBudget.h"
#include "kelo/web/HttpRequest.h"
#include "kelo/web/MultiPartParser.h"

namespace halvor::kelo::web {

// Parses one request straight into a (reused) HttpRequest, without a message object of its
// own. A body above `limits.maxMemoryBody` goes to a temporary file in `temporaryDirectory`,
// which the request owns once the message is complete (and which is removed if it never is).
// The file may grow to `limits.maxDiskBody` and takes its bytes from `limits.diskBudget`; a body
// beyond either fails with body_limit. A Transfer-Encoding other than one "chunked" fails with
// bad_transfer_encoding: its body would otherwise be read as the next request.
// A multipart/form-data body above `limits.maxMemoryBody` (or chunked, of a size not known) is
// not kept whole: it is parsed as it arrives, its fields into memory (at most maxMemoryBody),
// each file part into a temporary file of its own in the folder the first of
// `limits.uploadDirectories` names (else in `temporaryDirectory`); the whole body may hold
// maxDiskBody, the files take their bytes from the disk budget. The parts reach the request
// (HttpRequest::streamedForm) once the message is complete; if it never is, they are removed.
class RequestParser : public boost::beast::http::basic_parser<true> {
 public:
  using error_code = boost::beast::error_code;
  using string_view = boost::beast::string_view;

  struct Limits {
    std::uint64_t maxMemoryBody = 0;
    std::uint64_t maxDiskBody = 0;
    std::shared_ptr<DiskBudget> diskBudget;
    const std::vector<std::function<std::string(const HttpRequest&)>>* uploadDirectories = nullptr;
  };

  RequestParser(HttpRequest& request, Limits limits, const std::string& temporaryDirectory);
  ~RequestParser() override;

  // True when the request asked for "Expect: 100-continue".
  bool expectsContinue() const { return expectsContinue_; }

 private:
  void on_request_impl(boost::beast::http::verb method, string_view methodText, string_view target,
                       int version, error_code& ec) override;
  void on_response_impl(int code, string_view reason, int version, error_code& ec) override;
  void on_field_impl(boost::beast::http::field name, string_view nameText, string_view value,
                     error_code& ec) override;
  void on_header_impl(error_code& ec) override;
  void on_body_init_impl(const boost::optional<std::uint64_t>& contentLength,
                         error_code& ec) override;
  std::size_t on_body_impl(string_view body, error_code& ec) override;
  void on_chunk_header_impl(std::uint64_t size, string_view extensions, error_code& ec) override;
  std::size_t on_chunk_body_impl(std::uint64_t remain, string_view body, error_code& ec) override;
  void on_finish_impl(error_code& ec) override;

  bool appendBody(string_view chunk);
  bool startForm(const boost::optional<std::uint64_t>& contentLength);
  bool appendForm(string_view chunk);
  std::string uploadDirectory() const;
  bool writeToFile(const char* data, std::size_t size);
  bool openBodyFile();
  void discardBodyFile();

  HttpRequest& request_;
  Limits limits_;
  const std::string& temporaryDirectory_;
  bool expectsContinue_ = false;
  int bodyFile_ = -1;
  std::string bodyFilePath_;
  std::uint64_t bodyFileLength_ = 0;
  std::shared_ptr<DiskBudget::Lease> lease_;
  bool transferEncodingSeen_ = false;
  std::shared_ptr<MultiPartParser> form_;
  std::uint64_t formLength_ = 0;
};

}  // namespace halvor::kelo::web
