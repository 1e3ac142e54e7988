#include "kelo/handlers/certificates/ApplyCertificateListener.h"

#include <sstream>

#include "kelo/Kelo.h"
#include "kelo/handlers/certificates/CertificateFile.h"

namespace halvor::kelo {
namespace {

void fail(tavelabi::ResourceAction& action, const std::string& message) {
  action.resource.updateValue("errorMessage", tavelabi::ResourceValue(message));
}

bool hasError(const tavelabi::ResourceAction& action) {
  return action.resource.values.count("errorMessage") != 0;
}

}  // namespace

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

std::vector<boost::filesystem::path> ApplyCertificateListener::getFilesIn(std::string directory) {
  std::vector<boost::filesystem::path> files;
  for (const boost::filesystem::directory_entry& entry :
       boost::filesystem::directory_iterator(directory)) {
    if (boost::filesystem::is_regular_file(entry.status())) files.push_back(entry.path());
  }
  return files;
}

void ApplyCertificateListener::ApplyCertificate(tavelabi::ResourceAction& action) {
  CertificateFile certificate;
  CertificateFile key;
  const std::string password = action.resource.values.at("password").getStringValue();
  const std::string uploadTarget = action.resource.values.at("uploadTarget").getStringValue();
  // The reply travels back in the action's own resource.
  action.resource.values = tavelabi::Resource().values;
  const std::vector<boost::filesystem::path> files = getFilesIn(uploadTarget);
  const std::size_t count = files.size();
  if (count == 1) {
    CertificateFile both;
    both.openCertificateFile(files[0].string(), password);
    boost::system::error_code ignored;
    boost::filesystem::remove(files[0], ignored);
    if (!both.hasCertificate() || !both.hasPrivateKey()) {
      return fail(action,
                  "only one file is uploaded, it should contain both certificate and private key, "
                  "but it doesn't");
    }
    certificate = both.getCertificateOnly();
    key = both.getPrivateKeyOnly();
    if (!certificate.matches(key)) {
      return fail(action, "the certificate and private key in the uploaded file don't match");
    }
  } else if (count == 2) {
    for (const boost::filesystem::path& path : files) {
      CertificateFile file;
      file.openCertificateFile(path.string(), password);
      boost::system::error_code ignored;
      boost::filesystem::remove(path, ignored);
      if (file.hasCertificate() && file.hasPrivateKey()) {
        fail(action,
             "two files uploaded, but one of them contains both certificate and private key");
      } else {
        if (file.hasCertificate()) certificate = file;
        if (file.hasPrivateKey()) key = file;
      }
      if (!file.hasCertificate() && !file.hasPrivateKey()) fail(action, "not supported format");
    }
    if (hasError(action)) return;
    if (!certificate.matches(key)) {
      return fail(action, "the certificate and private key in the uploaded files don't match");
    }
  } else {
    return fail(action,
                "need 1 files containing certificate and private key or two files contining "
                "certificate and private key seperately. But " +
                    std::to_string(count) + " files uploaded in " + uploadTarget);
  }
  saveAndRestart(action, certificate, key);
}

void ApplyCertificateListener::saveAndRestart(tavelabi::ResourceAction& action,
                                              const CertificateFile& certificate,
                                              const CertificateFile& key) {
  // The server reads its files only at start: the restart is what makes them take effect.
  if (certificate.savePemAs(kelo->getCertificatePath()) &&
      key.savePemAs(kelo->getPrivateKeyPath())) {
    kelo->setRestartDue();
    return;
  }
  fail(action, "couldn't save certificate files in PEM format.");
}

}  // namespace halvor::kelo
