#include "kelo/handlers/certificates/CertificateFile.h"

#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/pkcs12.h>

#include <fstream>
#include <memory>
#include <vector>

namespace halvor::kelo {
namespace {

using Bio = std::unique_ptr<BIO, decltype(&BIO_free)>;

// A read-only memory BIO over the bytes; they must outlive it.
Bio readBio(std::string_view data) {
  return Bio(BIO_new_mem_buf(data.data(), static_cast<int>(data.size())), &BIO_free);
}

// The text written to a memory BIO by `write`; empty when it fails.
template <class Write>
std::string pemText(Write&& write) {
  Bio out(BIO_new(BIO_s_mem()), &BIO_free);
  if (!out || write(out.get()) != 1) return {};
  char* text = nullptr;
  const long length = BIO_get_mem_data(out.get(), &text);
  if (length <= 0 || text == nullptr) return {};
  return std::string(text, static_cast<std::size_t>(length));
}

// Everything of the file's name behind its last "."; the whole name when there is none.
std::string extensionOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
  const std::size_t dot = name.rfind('.');
  return dot == std::string::npos ? name : name.substr(dot + 1);
}

}  // namespace

CertificateFile::CertificateFile(const CertificateFile& other) { *this = other; }

CertificateFile& CertificateFile::operator=(const CertificateFile& other) {
  if (this == &other) return *this;
  // References are taken before the old ones go, in case both share an object.
  if (other.privateKey != nullptr) EVP_PKEY_up_ref(other.privateKey);
  if (other.certificate != nullptr) X509_up_ref(other.certificate);
  clear();
  contentFlags = other.contentFlags;
  password = other.password;
  privateKey = other.privateKey;
  certificate = other.certificate;
  return *this;
}

CertificateFile::~CertificateFile() { clear(); }

void CertificateFile::clear() {
  EVP_PKEY_free(privateKey);
  X509_free(certificate);
  privateKey = nullptr;
  certificate = nullptr;
}

CertificateFile& CertificateFile::openCertificateFile(std::string path,
                                                      std::string_view filePassword) {
  clear();
  password = std::string(filePassword);
  std::ifstream in(path, std::ios::binary | std::ios::ate);
  const std::streamoff size = in ? static_cast<std::streamoff>(in.tellg()) : 0;
  if (size <= 0) return *this;
  std::vector<char> bytes(static_cast<std::size_t>(size));
  in.seekg(0);
  if (!in.read(bytes.data(), size)) return *this;
  const std::string_view data(bytes.data(), bytes.size());
  const std::string extension = extensionOf(path);
  if (extension == "p12" || extension == "pfx") {
    parsePKCS12(data);
  } else if (extension == "der") {
    parseDer(data);
  } else if (extension == "pem") {
    parsePem(data);
  } else if (extension == "p7" || extension == "p7a" || extension == "p7b" || extension == "p7c") {
    parsePKCS7(data);
  } else if (isPEMFormat(data)) {
    parsePem(data);
  } else {
    parseDer(data);
  }
  // A failed parse leaves errors on the thread's queue that nobody else would read.
  ERR_clear_error();
  return *this;
}

bool CertificateFile::isPEMFormat(std::string_view data) {
  if (data.size() <= 9) return false;
  // Both markers are looked for from the start: their order is not checked.
  return data.find("-----BEGIN") != std::string_view::npos &&
         data.find("-----END") != std::string_view::npos;
}

void CertificateFile::parsePem(std::string_view data) {
  Bio certificates = readBio(data);
  certificate = PEM_read_bio_X509(certificates.get(), nullptr, nullptr, nullptr);
  if (certificate != nullptr) contentFlags |= kHasCertificate;
  Bio keys = readBio(data);
  // The default pass phrase callback takes the user data as the pass phrase.
  privateKey =
      PEM_read_bio_PrivateKey(keys.get(), nullptr, nullptr, const_cast<char*>(password.c_str()));
  if (privateKey != nullptr) contentFlags |= kHasPrivateKey;
}

void CertificateFile::parseDer(std::string_view data) {
  Bio certificates = readBio(data);
  certificate = d2i_X509_bio(certificates.get(), nullptr);
  if (certificate != nullptr) {
    contentFlags |= kHasCertificate;
    return;
  }
  Bio keys = readBio(data);
  privateKey = d2i_PrivateKey_bio(keys.get(), nullptr);
  if (privateKey != nullptr) contentFlags |= kHasPrivateKey;
}

void CertificateFile::parsePKCS12(std::string_view data) {
  Bio in = readBio(data);
  PKCS12* bundle = d2i_PKCS12_bio(in.get(), nullptr);
  if (bundle == nullptr) return;
  if (PKCS12_parse(bundle, password.c_str(), &privateKey, &certificate, nullptr) != 1) {
    // A failed parse may leave partial results behind; nothing of them counts.
    clear();
  }
  PKCS12_free(bundle);
  if (certificate != nullptr) contentFlags |= kHasCertificate;
  if (privateKey != nullptr) contentFlags |= kHasPrivateKey;
}

PKCS7* CertificateFile::getPKCS7fromPEM(std::string_view data) {
  Bio in = readBio(data);
  return PEM_read_bio_PKCS7(in.get(), nullptr, nullptr, nullptr);
}

PKCS7* CertificateFile::getPKCS7fromDER(std::string_view data) {
  Bio in = readBio(data);
  return d2i_PKCS7_bio(in.get(), nullptr);
}

void CertificateFile::parsePKCS7(std::string_view data) {
  PKCS7* structure = isPEMFormat(data) ? getPKCS7fromPEM(data) : getPKCS7fromDER(data);
  if (structure == nullptr) return;
  STACK_OF(X509)* certificates = nullptr;
  const int type = OBJ_obj2nid(structure->type);
  if (type == NID_pkcs7_signed && structure->d.sign != nullptr) {
    certificates = structure->d.sign->cert;
  } else if (type == NID_pkcs7_signedAndEnveloped && structure->d.signed_and_enveloped != nullptr) {
    certificates = structure->d.signed_and_enveloped->cert;
  }
  // Only the first certificate is kept; a PKCS#7 file never holds a key.
  if (certificates != nullptr && sk_X509_num(certificates) > 0) {
    certificate = sk_X509_value(certificates, 0);
    X509_up_ref(certificate);
    contentFlags = kHasCertificate;
  }
  PKCS7_free(structure);
}

bool CertificateFile::matches(const CertificateFile& other) const {
  const CertificateFile* withCertificate = nullptr;
  const CertificateFile* withKey = nullptr;
  if (contentFlags == kHasCertificate && other.contentFlags == kHasPrivateKey) {
    withCertificate = this;
    withKey = &other;
  } else if (contentFlags == kHasPrivateKey && other.contentFlags == kHasCertificate) {
    withCertificate = &other;
    withKey = this;
  } else {
    return false;
  }
  if (withCertificate->certificate == nullptr || withKey->privateKey == nullptr) return false;
  const bool fits = X509_check_private_key(withCertificate->certificate, withKey->privateKey) != 0;
  // A mismatch leaves an error on the thread's queue that nobody else would read.
  ERR_clear_error();
  return fits;
}

CertificateFile CertificateFile::getCertificateOnly() const {
  CertificateFile only;
  only.password = password;
  if (certificate != nullptr) {
    X509_up_ref(certificate);
    only.certificate = certificate;
    only.contentFlags = kHasCertificate;
  }
  return only;
}

CertificateFile CertificateFile::getPrivateKeyOnly() const {
  CertificateFile only;
  only.password = password;
  if (privateKey != nullptr) {
    EVP_PKEY_up_ref(privateKey);
    only.privateKey = privateKey;
    only.contentFlags = kHasPrivateKey;
  }
  return only;
}

std::string CertificateFile::getCertificatePem() const {
  if (certificate == nullptr) return {};
  return pemText([this](BIO* out) { return PEM_write_bio_X509(out, certificate); });
}

std::string CertificateFile::getPrivateKeyPem() const {
  if (privateKey == nullptr) return {};
  return pemText([this](BIO* out) {
    return PEM_write_bio_PrivateKey(out, privateKey, nullptr, nullptr, 0, nullptr, nullptr);
  });
}

bool CertificateFile::savePemAs(std::string path) const {
  const std::string text = getCertificatePem() + getPrivateKeyPem();
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(text.data(), static_cast<std::streamsize>(text.size()));
  const bool written = out.good();
  out.close();
  return written;
}

}  // namespace halvor::kelo
