#include "kelo/handlers/certificates/ApplyCertificateListener.h"

#include <sstream>

#include "kelo/Kelo.h"

namespace halvor::kelo {

ApplyCertificateListener::ApplyCertificateListener(const std::string& pattern,
                                                   tavelabi::ITavel* tavel, Kelo* kelo)
    : tavelabi::AbstractResourceListener(pattern, {tavelabi::CCRUD::Command}),
      tavel(tavel),
      kelo(kelo) {}

ApplyCertificateListener::operator std::string() {
  std::ostringstream text;
  text << getPattern();
  return text.str();
}

void ApplyCertificateListener::processResourceListener(const tavelabi::TimePoint& /*now*/,
                                                       tavelabi::ResourceAction& action) {
  ApplyCertificate(action);
}

void ApplyCertificateListener::ApplyCertificate(tavelabi::ResourceAction& action) {
  // Parsing and checking uploaded certificates is not built yet: the command is refused in the
  // words of its reply, the server's files stay as they are and no restart is asked for.
  action.resource = tavelabi::Resource();
  action.resource.addValue("errorMessage",
                           tavelabi::ResourceValue("replacing the server certificate is not "
                                                   "supported by this build"));
}

}  // namespace halvor::kelo
