// The certificate file parsers on arbitrary bytes and pass phrases: PEM, DER, PKCS#12 and
// PKCS#7, then what an upload does with their result (printing, matching, copying).
// Input: one byte choosing the parser, one byte for the pass phrase's length, the pass phrase,
// then the file's bytes.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "kelo/handlers/certificates/CertificateFile.h"

using halvor::kelo::CertificateFile;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const std::uint8_t parser = data[0] % 4;
  const std::size_t passwordLength = std::min<std::size_t>(data[1], size - 2);
  const std::string password(reinterpret_cast<const char*>(data + 2), passwordLength);
  const std::string_view bytes(reinterpret_cast<const char*>(data + 2 + passwordLength),
                               size - 2 - passwordLength);
  // The parsers read the pass phrase from the object, as openCertificateFile leaves it there.
  CertificateFile file;
  const std::string path = "/nonexistent";
  file.openCertificateFile(path, password);
  (void)CertificateFile::isPEMFormat(bytes);
  switch (parser) {
    case 0:
      file.parsePem(bytes);
      break;
    case 1:
      file.parseDer(bytes);
      break;
    case 2:
      file.parsePKCS12(bytes);
      break;
    default:
      file.parsePKCS7(bytes);
      break;
  }
  (void)file.getCertificatePem();
  (void)file.getPrivateKeyPem();
  const CertificateFile certificate = file.getCertificateOnly();
  const CertificateFile key = file.getPrivateKeyOnly();
  (void)certificate.matches(key);
  CertificateFile copy;
  copy = file;
  copy.clear();
  return 0;
}
