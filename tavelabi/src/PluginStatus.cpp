#include "tavelabi/PluginStatus.h"

#include <utility>

namespace halvor::tavelabi {

PluginStatus::PluginStatus(Code code, std::string text) : code_(code), text_(std::move(text)) {}

const char* PluginStatus::codeName(Code code) {
  switch (code) {
    case Ok:
      return "Ok";
    case Stopped:
      return "Stopped";
    case RuntimeFailure:
      return "RuntimeFailure";
    case ConfigurationFailure:
      return "ConfigurationFailure";
    case AuthenticationFailure:
      return "AuthenticationFailure";
    case Initializing:
      return "Initializing";
  }
  return "Unknown";
}

}  // namespace halvor::tavelabi
