#include "unit/handlers/certificates/TestCertificates.h"

#include <openssl/bio.h>
#include <openssl/pem.h>
#include <openssl/pkcs12.h>
#include <openssl/pkcs7.h>

#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>

namespace halvor::kelo::test {
namespace {

using Bio = std::unique_ptr<BIO, decltype(&BIO_free)>;

template <class Write>
std::string written(Write&& write) {
  Bio out(BIO_new(BIO_s_mem()), &BIO_free);
  if (write(out.get()) != 1) throw std::runtime_error("could not write test material");
  char* data = nullptr;
  const long length = BIO_get_mem_data(out.get(), &data);
  return std::string(data, static_cast<std::size_t>(length));
}

}  // namespace

TestIdentity::TestIdentity(const std::string& commonName) {
  key_ = EVP_PKEY_Q_keygen(nullptr, nullptr, "EC", "P-256");
  if (key_ == nullptr) throw std::runtime_error("no key");
  certificate_ = X509_new();
  X509_set_version(certificate_, 2);
  ASN1_INTEGER_set(X509_get_serialNumber(certificate_), 1);
  X509_gmtime_adj(X509_getm_notBefore(certificate_), -3600);
  X509_gmtime_adj(X509_getm_notAfter(certificate_), 3600L * 24 * 30);
  X509_NAME* name = X509_get_subject_name(certificate_);
  X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC,
                             reinterpret_cast<const unsigned char*>(commonName.c_str()), -1, -1, 0);
  X509_set_issuer_name(certificate_, name);
  X509_set_pubkey(certificate_, key_);
  if (X509_sign(certificate_, key_, EVP_sha256()) == 0) throw std::runtime_error("no signature");
}

TestIdentity::~TestIdentity() {
  X509_free(certificate_);
  EVP_PKEY_free(key_);
}

std::string TestIdentity::certificatePem() const {
  return written([this](BIO* out) { return PEM_write_bio_X509(out, certificate_); });
}

std::string TestIdentity::keyPem() const {
  return written([this](BIO* out) {
    return PEM_write_bio_PrivateKey(out, key_, nullptr, nullptr, 0, nullptr, nullptr);
  });
}

std::string TestIdentity::encryptedKeyPem(const std::string& password) const {
  return written([&](BIO* out) {
    return PEM_write_bio_PKCS8PrivateKey(out, key_, EVP_aes_256_cbc(), password.data(),
                                         static_cast<int>(password.size()), nullptr, nullptr);
  });
}

std::string TestIdentity::certificateDer() const {
  return written([this](BIO* out) { return i2d_X509_bio(out, certificate_); });
}

std::string TestIdentity::keyDer() const {
  return written([this](BIO* out) { return i2d_PrivateKey_bio(out, key_); });
}

std::string TestIdentity::pkcs12(const std::string& password) const {
  PKCS12* bundle =
      PKCS12_create(password.c_str(), "kelo test", key_, certificate_, nullptr, 0, 0, 0, 0, 0);
  if (bundle == nullptr) throw std::runtime_error("no PKCS#12");
  std::string bytes = written([bundle](BIO* out) { return i2d_PKCS12_bio(out, bundle); });
  PKCS12_free(bundle);
  return bytes;
}

namespace {

PKCS7* certificatesOnly(X509* first, const std::vector<const TestIdentity*>& others) {
  PKCS7* structure = PKCS7_new();
  PKCS7_set_type(structure, NID_pkcs7_signed);
  PKCS7_content_new(structure, NID_pkcs7_data);
  PKCS7_add_certificate(structure, first);
  for (const TestIdentity* other : others) PKCS7_add_certificate(structure, other->certificate());
  return structure;
}

}  // namespace

std::string TestIdentity::pkcs7Der(const std::vector<const TestIdentity*>& others) const {
  PKCS7* structure = certificatesOnly(certificate_, others);
  std::string bytes = written([structure](BIO* out) { return i2d_PKCS7_bio(out, structure); });
  PKCS7_free(structure);
  return bytes;
}

std::string TestIdentity::pkcs7Pem(const std::vector<const TestIdentity*>& others) const {
  PKCS7* structure = certificatesOnly(certificate_, others);
  std::string text = written([structure](BIO* out) { return PEM_write_bio_PKCS7(out, structure); });
  PKCS7_free(structure);
  return text;
}

void writeFile(const std::filesystem::path& path, const std::string& content) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(content.data(), static_cast<std::streamsize>(content.size()));
  if (!out) throw std::runtime_error("could not write " + path.string());
}

std::string readFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

}  // namespace halvor::kelo::test
