#pragma once

#include <exception>
#include <string>

namespace halvor::kelo {

// An upload of the server's certificate files that the certificate listener refused; the text
// is "Certificate files error: " and the listener's words.
class CertificateFilesError : public std::exception {
 public:
  explicit CertificateFilesError(std::string text) : text_(std::move(text)) {}
  const char* what() const noexcept override { return text_.c_str(); }

 private:
  std::string text_;
};

}  // namespace halvor::kelo
