#pragma once

#include <openssl/evp.h>
#include <openssl/pkcs7.h>
#include <openssl/x509.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace halvor::kelo {

// One uploaded file of certificate material, in whatever format it came (PEM, DER, PKCS#12,
// PKCS#7): at most one certificate and one private key, each held with its own reference.
class CertificateFile {
 public:
  static constexpr std::uint32_t kHasCertificate = 1;
  static constexpr std::uint32_t kHasPrivateKey = 2;

  CertificateFile() = default;
  CertificateFile(const CertificateFile& other);
  // Copies flags and password and shares both objects, taking a reference on each.
  CertificateFile& operator=(const CertificateFile& other);
  ~CertificateFile();

  // Parses the file by its extension (case-sensitive), or by its content when the extension is
  // none of the known ones. An empty or unreadable file leaves the object empty.
  CertificateFile& openCertificateFile(std::string path, std::string_view password);

  bool hasCertificate() const { return (contentFlags & kHasCertificate) != 0; }
  bool hasPrivateKey() const { return (contentFlags & kHasPrivateKey) != 0; }
  // True only for a certificate-only file and a key-only file whose key fits the certificate.
  bool matches(const CertificateFile& other) const;
  CertificateFile getCertificateOnly() const;
  CertificateFile getPrivateKeyOnly() const;
  // PEM text; empty when the item is absent or cannot be printed. The key is never encrypted.
  std::string getCertificatePem() const;
  std::string getPrivateKeyPem() const;
  // The certificate's PEM then the key's PEM, replacing the file's content.
  bool savePemAs(std::string path) const;
  // Frees both items; the flags stay.
  void clear();

  void parsePem(std::string_view data);
  void parseDer(std::string_view data);
  void parsePKCS12(std::string_view data);
  void parsePKCS7(std::string_view data);
  static bool isPEMFormat(std::string_view data);
  static PKCS7* getPKCS7fromPEM(std::string_view data);
  static PKCS7* getPKCS7fromDER(std::string_view data);

  std::uint32_t flags() const { return contentFlags; }
  EVP_PKEY* key() const { return privateKey; }
  X509* x509() const { return certificate; }

 private:
  std::uint32_t contentFlags = 0;
  std::string password;
  EVP_PKEY* privateKey = nullptr;
  X509* certificate = nullptr;
};

}  // namespace halvor::kelo
