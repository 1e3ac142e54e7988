#pragma once

#include <exception>
#include <stdexcept>
#include <string>
#include <utility>

namespace halvor::tavelabi {

// Base of the host's exceptions; what() gives the text handed to the constructor.
class ITavelAbiException : public std::exception {
 public:
  explicit ITavelAbiException(std::string message) : message_(std::move(message)) {}
  const char* what() const noexcept override { return message_.c_str(); }

 private:
  std::string message_;
};

// The session's user may not do this.
class AuthorizationFailure : public ITavelAbiException {
 public:
  using ITavelAbiException::ITavelAbiException;
};

// The session of an action does not exist or has expired.
class NonExistentSessionException : public ITavelAbiException {
 public:
  using ITavelAbiException::ITavelAbiException;
};

// No resource at the path of an action.
class NonExistentResourcePathException : public ITavelAbiException {
 public:
  using ITavelAbiException::ITavelAbiException;
};

// A JSON file or text could not be read.
class JsonParserException : public ITavelAbiException {
 public:
  using ITavelAbiException::ITavelAbiException;
};

// A JSON text is not well formed.
class BadlyFormedJsonStringException : public std::exception {
 public:
  explicit BadlyFormedJsonStringException(std::string message) : message_(std::move(message)) {}
  const char* what() const noexcept override { return message_.c_str(); }

 private:
  std::string message_;
};

// A ResourceValue getter was asked for a type that the value does not hold.
class WrongResourceValueType : public std::logic_error {
 public:
  using std::logic_error::logic_error;
};

}  // namespace halvor::tavelabi
