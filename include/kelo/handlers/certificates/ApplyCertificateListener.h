#pragma once

#include <boost/filesystem.hpp>
#include <string>
#include <vector>

#include "tavelabi/IResourceListener.h"
#include "tavelabi/ITavel.h"

namespace halvor::kelo {

class Kelo;
class CertificateFile;

// Receives the host's command "/command/applyCertificate", which replaces the web server's TLS
// identity. Registered by Kelo::init when the certificate files are present.
class ApplyCertificateListener : public tavelabi::AbstractResourceListener {
 public:
  ApplyCertificateListener(const std::string& pattern, tavelabi::ITavel* tavel, Kelo* kelo);

  operator std::string() override;  // NOLINT(google-explicit-constructor)
  void processResourceListener(const tavelabi::TimePoint& now,
                               tavelabi::ResourceAction& action) override;

  // The regular files directly in `directory`, in iteration order; a missing directory throws.
  std::vector<boost::filesystem::path> getFilesIn(std::string directory);
  // Checks the uploaded files in the action's "uploadTarget", deletes them, and on success
  // writes the server's certificate and key in PEM and asks for a restart. The reply is in the
  // action's resource: nothing on success, "errorMessage" otherwise.
  void ApplyCertificate(tavelabi::ResourceAction& action);

 private:
  void saveAndRestart(tavelabi::ResourceAction& action, const CertificateFile& certificate,
                      const CertificateFile& key);

  tavelabi::ITavel* tavel;
  Kelo* kelo;
};

}  // namespace halvor::kelo
