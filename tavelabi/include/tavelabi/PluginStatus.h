#pragma once

#include <string>

namespace halvor::tavelabi {

// What a plug-in reports of itself with ITavel::setPluginStatus.
class PluginStatus {
 public:
  enum Code {
    Ok = 0,
    Stopped = 1,
    RuntimeFailure = 2,
    ConfigurationFailure = 3,
    AuthenticationFailure = 4,
    Initializing = 5,
  };

  PluginStatus(Code code, std::string text);

  Code getCode() const { return code_; }
  const std::string& getText() const { return text_; }
  // "Ok", "Stopped", ...; "Unknown" for a number outside the codes.
  static const char* codeName(Code code);

 private:
  Code code_;
  std::string text_;
};

}  // namespace halvor::tavelabi
