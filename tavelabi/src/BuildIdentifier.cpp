#include "tavelabi/BuildIdentifier.h"

namespace halvor::tavelabi {

BuildIdentifier::BuildIdentifier(int major, int minor, int patch, const std::string& revision)
    : major_(major), minor_(minor), patch_(patch), revision_(revision) {}

BuildIdentifier::~BuildIdentifier() = default;

BuildIdentifier::operator std::string() const {
  std::string text =
      std::to_string(major_) + "." + std::to_string(minor_) + "." + std::to_string(patch_);
  if (!revision_.empty()) text += "-" + revision_;
  return text;
}

}  // namespace halvor::tavelabi
