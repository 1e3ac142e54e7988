#pragma once

#include <exception>
#include <string>

namespace halvor::kelo {

// The plug-in's own failures. Each text is made once, in the constructor, and reaches the client
// through the frame's 500 reply as it stands.
class KeloException : public std::exception {
 public:
  const char* what() const noexcept override { return message.c_str(); }

 protected:
  explicit KeloException(std::string text) : message(std::move(text)) {}

 private:
  std::string message;
};

class InvalidJson : public KeloException {
 public:
  explicit InvalidJson(const std::string& parserMessage)
      : KeloException("Invalid Json: " + parserMessage + ".") {}
};

class RequestMissingFormData : public KeloException {
 public:
  explicit RequestMissingFormData(const std::string& field)
      : KeloException("Request missing form data: " + field + ".") {}
};

class RequestMissingQueryParameter : public KeloException {
 public:
  explicit RequestMissingQueryParameter(const std::string& parameter)
      : KeloException("Request missing query parameter: " + parameter + ".") {}
};

class BadPathException : public KeloException {
 public:
  explicit BadPathException(const std::string& path) : KeloException("Unknown path: " + path) {}
};

}  // namespace halvor::kelo
