#pragma once

#include <exception>
#include <string>

namespace halvor::kelo {

// The host reported "errorOccurred" while it carried out a preset action; the text is the
// host's "errorMessage".
class UnableToCompletePresetAction : public std::exception {
 public:
  explicit UnableToCompletePresetAction(const std::string& hostText)
      : text("Unable to complete preset action: " + hostText) {}
  const char* what() const noexcept override { return text.c_str(); }

  std::string text;
};

}  // namespace halvor::kelo
