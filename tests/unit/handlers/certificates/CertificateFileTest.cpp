#include <gtest/gtest.h>

#include <filesystem>

#include "kelo/handlers/certificates/CertificateFile.h"
#include "unit/handlers/certificates/TestCertificates.h"

namespace halvor::kelo::test {
namespace {

class CertificateFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    folder = std::filesystem::temp_directory_path() /
             ("kelo-certificate-file-" + std::to_string(::getpid()) + "-" +
              ::testing::UnitTest::GetInstance()->current_test_info()->name());
    std::filesystem::create_directories(folder);
  }
  void TearDown() override { std::filesystem::remove_all(folder); }

  CertificateFile open(const std::string& name, const std::string& content,
                       const std::string& password = "") {
    writeFile(folder / name, content);
    CertificateFile file;
    file.openCertificateFile((folder / name).string(), password);
    return file;
  }

  std::filesystem::path folder;
  TestIdentity identity{"kelo.test"};
  TestIdentity other{"other.test"};
};

TEST_F(CertificateFileTest, APemWithCertificateAndKeyHoldsBoth) {
  CertificateFile file = open("both.pem", identity.certificatePem() + identity.keyPem());
  EXPECT_EQ(file.flags(), 3u);
  EXPECT_EQ(X509_cmp(file.x509(), identity.certificate()), 0);
  EXPECT_EQ(EVP_PKEY_eq(file.key(), identity.key()), 1);
}

TEST_F(CertificateFileTest, AFileWithBothItemsNeverMatchesButItsHalvesDo) {
  CertificateFile both = open("both.pem", identity.certificatePem() + identity.keyPem());
  EXPECT_FALSE(both.matches(both));
  CertificateFile certificate = both.getCertificateOnly();
  CertificateFile key = both.getPrivateKeyOnly();
  EXPECT_EQ(certificate.flags(), 1u);
  EXPECT_EQ(key.flags(), 2u);
  EXPECT_TRUE(certificate.matches(key));
  EXPECT_TRUE(key.matches(certificate));
  EXPECT_FALSE(both.matches(key));
}

TEST_F(CertificateFileTest, ACertificateAndAnotherPairsKeyDoNotMatch) {
  CertificateFile certificate = open("a.pem", identity.certificatePem());
  CertificateFile key = open("b.pem", other.keyPem());
  EXPECT_FALSE(certificate.matches(key));
  EXPECT_FALSE(certificate.matches(certificate));
}

TEST_F(CertificateFileTest, AnEncryptedKeyNeedsTheRightPassword) {
  const std::string content = identity.certificatePem() + identity.encryptedKeyPem("s3cret");
  CertificateFile right = open("enc.pem", content, "s3cret");
  EXPECT_TRUE(right.hasCertificate());
  EXPECT_TRUE(right.hasPrivateKey());
  CertificateFile wrong = open("enc.pem", content, "guess");
  EXPECT_TRUE(wrong.hasCertificate());
  EXPECT_FALSE(wrong.hasPrivateKey());
  CertificateFile none = open("enc.pem", content, "");
  EXPECT_FALSE(none.hasPrivateKey());
}

TEST_F(CertificateFileTest, ADerFileHoldsACertificateOrAKey) {
  EXPECT_EQ(open("c.der", identity.certificateDer()).flags(), 1u);
  CertificateFile key = open("k.der", identity.keyDer());
  EXPECT_EQ(key.flags(), 2u);
  EXPECT_TRUE(open("c.der", identity.certificateDer()).matches(key));
}

TEST_F(CertificateFileTest, APkcs12NeedsItsPassword) {
  CertificateFile right = open("bundle.p12", identity.pkcs12("pw"), "pw");
  EXPECT_EQ(right.flags(), 3u);
  EXPECT_EQ(X509_cmp(right.x509(), identity.certificate()), 0);
  EXPECT_EQ(open("bundle.pfx", identity.pkcs12("pw"), "pw").flags(), 3u);
  CertificateFile wrong = open("bundle.p12", identity.pkcs12("pw"), "nope");
  EXPECT_EQ(wrong.flags(), 0u);
  EXPECT_EQ(wrong.key(), nullptr);
  EXPECT_EQ(wrong.x509(), nullptr);
}

TEST_F(CertificateFileTest, APkcs7KeepsOnlyItsFirstCertificateInDerAndPem) {
  for (const std::string name : {"chain.p7b", "chain.p7", "chain.p7c", "chain.p7a"}) {
    CertificateFile der = open(name, identity.pkcs7Der({&other}));
    EXPECT_EQ(der.flags(), 1u) << name;
    EXPECT_EQ(X509_cmp(der.x509(), identity.certificate()), 0) << name;
  }
  CertificateFile pem = open("chain.p7b", other.pkcs7Pem({&identity}));
  EXPECT_EQ(pem.flags(), 1u);
  EXPECT_EQ(X509_cmp(pem.x509(), other.certificate()), 0);
}

TEST_F(CertificateFileTest, TheExtensionTestIsCaseSensitiveAndContentDecidesOtherwise) {
  // "PEM" is no listed extension: the content is PEM, so it is read as such.
  EXPECT_EQ(open("server.PEM", identity.certificatePem() + identity.keyPem()).flags(), 3u);
  // Neither is "P12": the bytes are not PEM, so DER is tried, and a PKCS#12 is not DER X.509.
  EXPECT_EQ(open("bundle.P12", identity.pkcs12("pw"), "pw").flags(), 0u);
  // A name without a dot is its own extension, then the content decides.
  EXPECT_EQ(open("servercert", identity.certificatePem()).flags(), 1u);
  EXPECT_EQ(open("serverkey", identity.keyDer()).flags(), 2u);
}

TEST_F(CertificateFileTest, ThePemTestWantsMoreThanNineBytesAndBothMarkersInAnyOrder) {
  EXPECT_FALSE(CertificateFile::isPEMFormat("-----END"));
  EXPECT_FALSE(CertificateFile::isPEMFormat("-----BEGIN CERTIFICATE----- no end"));
  EXPECT_TRUE(CertificateFile::isPEMFormat("-----END x -----BEGIN"));
  EXPECT_TRUE(CertificateFile::isPEMFormat(identity.certificatePem()));
  EXPECT_FALSE(CertificateFile::isPEMFormat(identity.certificateDer()));
}

TEST_F(CertificateFileTest, AnEmptyOrMissingFileLeavesTheObjectEmpty) {
  EXPECT_EQ(open("empty.pem", "").flags(), 0u);
  CertificateFile missing;
  missing.openCertificateFile((folder / "absent.pem").string(), "");
  EXPECT_EQ(missing.flags(), 0u);
  EXPECT_EQ(open("junk.txt", "not a certificate at all").flags(), 0u);
}

TEST_F(CertificateFileTest, PemOutputAndSavingWriteCertificateThenAnUnencryptedKey) {
  CertificateFile both =
      open("enc.pem", identity.certificatePem() + identity.encryptedKeyPem("pw"), "pw");
  EXPECT_EQ(both.getCertificatePem(), identity.certificatePem());
  EXPECT_EQ(both.getPrivateKeyPem(), identity.keyPem());
  ASSERT_TRUE(both.savePemAs((folder / "out.pem").string()));
  EXPECT_EQ(readFile(folder / "out.pem"), identity.certificatePem() + identity.keyPem());
  EXPECT_TRUE(both.getCertificateOnly().savePemAs((folder / "cert.pem").string()));
  EXPECT_EQ(readFile(folder / "cert.pem"), identity.certificatePem());
  EXPECT_FALSE(both.savePemAs((folder / "no/such/dir/out.pem").string()));
  CertificateFile empty;
  EXPECT_EQ(empty.getCertificatePem(), "");
  EXPECT_EQ(empty.getPrivateKeyPem(), "");
}

TEST_F(CertificateFileTest, CopiesShareTheItemsAndClearKeepsTheFlags) {
  CertificateFile copy;
  {
    CertificateFile both = open("both.pem", identity.certificatePem() + identity.keyPem());
    copy = both;
    EXPECT_EQ(copy.x509(), both.x509());
    EXPECT_EQ(copy.key(), both.key());
  }
  // The original is gone; the copy's references keep the items alive.
  EXPECT_EQ(copy.getCertificatePem(), identity.certificatePem());
  copy.clear();
  EXPECT_EQ(copy.x509(), nullptr);
  EXPECT_EQ(copy.flags(), 3u);
}

}  // namespace
}  // namespace halvor::kelo::test
