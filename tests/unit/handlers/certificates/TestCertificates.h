#pragma once

#include <openssl/evp.h>
#include <openssl/x509.h>

#include <filesystem>
#include <string>
#include <vector>

namespace halvor::kelo::test {

// Keys and self-signed certificates made afresh for each test, written in every format that an
// upload may bring. Nothing of it is kept in the repository.
class TestIdentity {
 public:
  explicit TestIdentity(const std::string& commonName);
  ~TestIdentity();
  TestIdentity(const TestIdentity&) = delete;
  TestIdentity& operator=(const TestIdentity&) = delete;

  std::string certificatePem() const;
  std::string keyPem() const;
  // The key in PKCS#8 PEM, encrypted with AES-256 under `password`.
  std::string encryptedKeyPem(const std::string& password) const;
  std::string certificateDer() const;
  std::string keyDer() const;
  // Certificate and key, encrypted under `password`.
  std::string pkcs12(const std::string& password) const;
  // A certificates-only PKCS#7 (signed data without signers): this certificate first, then the
  // others'.
  std::string pkcs7Der(const std::vector<const TestIdentity*>& others = {}) const;
  std::string pkcs7Pem(const std::vector<const TestIdentity*>& others = {}) const;

  X509* certificate() const { return certificate_; }
  EVP_PKEY* key() const { return key_; }

 private:
  EVP_PKEY* key_ = nullptr;
  X509* certificate_ = nullptr;
};

void writeFile(const std::filesystem::path& path, const std::string& content);
std::string readFile(const std::filesystem::path& path);

}  // namespace halvor::kelo::test
