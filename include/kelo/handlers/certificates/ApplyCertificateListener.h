#pragma once

#include <string>

#include "tavelabi/IResourceListener.h"
#include "tavelabi/ITavel.h"

namespace halvor::kelo {

class Kelo;

// Receives the host's command "/command/applyCertificate", which replaces the web server's TLS
// identity. Registered by Kelo::init when the certificate files are present.
class ApplyCertificateListener : public tavelabi::AbstractResourceListener {
 public:
  ApplyCertificateListener(const std::string& pattern, tavelabi::ITavel* tavel, Kelo* kelo);

  operator std::string() override;  // NOLINT(google-explicit-constructor)
  void processResourceListener(const tavelabi::TimePoint& now,
                               tavelabi::ResourceAction& action) override;

  void ApplyCertificate(tavelabi::ResourceAction& action);

 private:
  tavelabi::ITavel* tavel;
  Kelo* kelo;
};

}  // namespace halvor::kelo
