#pragma once

#include <string>

namespace halvor::tavelabi {

// A version: major.minor.patch and a revision, as text "2.59.2-r0".
class BuildIdentifier {
 public:
  BuildIdentifier(int major, int minor, int patch, const std::string& revision);
  virtual ~BuildIdentifier();

  operator std::string() const;  // NOLINT(google-explicit-constructor)

 private:
  int major_;
  int minor_;
  int patch_;
  std::string revision_;
};

}  // namespace halvor::tavelabi
