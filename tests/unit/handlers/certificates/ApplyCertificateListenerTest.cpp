#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

#include "kelo/Kelo.h"
#include "kelo/handlers/certificates/ApplyCertificateListener.h"
#include "support/FakePluginInfo.h"
#include "support/RecordingHost.h"
#include "unit/handlers/certificates/TestCertificates.h"

namespace halvor::kelo::test {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceAction;
using tavelabi::ResourceValue;

// The plug-in with its server files in a folder of the test.
class KeloWithFiles : public Kelo {
 public:
  KeloWithFiles(tavelabi::ITavel* tavel, std::filesystem::path folder)
      : Kelo(tavel), folder_(std::move(folder)) {}
  std::string getCertificatePath() override { return (folder_ / "server.crt").string(); }
  std::string getPrivateKeyPath() override { return (folder_ / keyName).string(); }
  std::string keyName = "server.key";

 private:
  std::filesystem::path folder_;
};

class ApplyCertificateTest : public ::testing::Test {
 protected:
  void SetUp() override {
    folder = std::filesystem::temp_directory_path() /
             ("kelo-apply-" + std::to_string(::getpid()) + "-" +
              ::testing::UnitTest::GetInstance()->current_test_info()->name());
    std::filesystem::remove_all(folder);
    uploads = folder / "uploaded";
    server = folder / "server";
    kelo = std::make_unique<KeloWithFiles>(&host, server);
    listener =
        std::make_unique<ApplyCertificateListener>("/command/applyCertificate", &host, kelo.get());
    std::filesystem::create_directories(uploads);
    std::filesystem::create_directories(server);
    writeFile(server / "server.crt", "old certificate");
    writeFile(server / "server.key", "old key");
  }
  void TearDown() override { std::filesystem::remove_all(folder); }

  // The command as the upload sends it; the reply's error text, "" when there is none.
  std::string apply(const std::string& password = "") {
    Resource request;
    request.addValue("uploadTarget", ResourceValue(uploads.string()));
    request.addValue("password", ResourceValue(password));
    ResourceAction action(CCRUD::Command, "/command/applyCertificate", request, &info, "s");
    listener->ApplyCertificate(action);
    auto message = action.resource.values.find("errorMessage");
    if (message == action.resource.values.end()) {
      EXPECT_TRUE(action.resource.values.empty());
      return "";
    }
    EXPECT_EQ(action.resource.values.size(), 1u);
    return message->second.getStringValue();
  }

  std::size_t filesLeft() const {
    std::size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(uploads)) {
      if (entry.is_regular_file()) ++count;
    }
    return count;
  }

  std::filesystem::path folder;
  std::filesystem::path uploads;
  std::filesystem::path server;
  RecordingHost host;
  FakePluginInfo info;
  std::unique_ptr<KeloWithFiles> kelo;
  std::unique_ptr<ApplyCertificateListener> listener;
  TestIdentity identity{"new.kelo.test"};
  TestIdentity other{"other.kelo.test"};
};

const char* kOneFileIncomplete =
    "only one file is uploaded, it should contain both certificate and private key, but it "
    "doesn't";

TEST_F(ApplyCertificateTest, OneFileWithAMatchingPairReplacesTheServersFilesAndAsksForARestart) {
  writeFile(uploads / "server.pem", identity.certificatePem() + identity.keyPem());
  EXPECT_EQ(apply(), "");
  EXPECT_EQ(readFile(server / "server.crt"), identity.certificatePem());
  EXPECT_EQ(readFile(server / "server.key"), identity.keyPem());
  EXPECT_TRUE(kelo->isRestartDue());
  EXPECT_EQ(filesLeft(), 0u);
}

TEST_F(ApplyCertificateTest, APkcs12WithThePasswordIsEnough) {
  writeFile(uploads / "bundle.p12", identity.pkcs12("pw"));
  EXPECT_EQ(apply("pw"), "");
  EXPECT_EQ(readFile(server / "server.key"), identity.keyPem());
}

TEST_F(ApplyCertificateTest, AWrongPasswordIsTheMessageOfMissingContent) {
  writeFile(uploads / "bundle.p12", identity.pkcs12("pw"));
  EXPECT_EQ(apply("wrong"), kOneFileIncomplete);
  EXPECT_FALSE(kelo->isRestartDue());
  EXPECT_EQ(filesLeft(), 0u);
  EXPECT_EQ(readFile(server / "server.crt"), "old certificate");
}

TEST_F(ApplyCertificateTest, APkcs7AloneHasNoKey) {
  writeFile(uploads / "chain.p7b", identity.pkcs7Der());
  EXPECT_EQ(apply(), kOneFileIncomplete);
  EXPECT_EQ(filesLeft(), 0u);
}

TEST_F(ApplyCertificateTest, APemOfTwoDifferentPairsDoesNotMatch) {
  writeFile(uploads / "mixed.pem", identity.certificatePem() + other.keyPem());
  EXPECT_EQ(apply(), "the certificate and private key in the uploaded file don't match");
  EXPECT_FALSE(kelo->isRestartDue());
  EXPECT_EQ(readFile(server / "server.key"), "old key");
}

TEST_F(ApplyCertificateTest, APkcs7AndTheMatchingKeyUseThePkcs7sFirstCertificate) {
  writeFile(uploads / "chain.p7b", identity.pkcs7Der({&other}));
  writeFile(uploads / "key.pem", identity.keyPem());
  EXPECT_EQ(apply(), "");
  EXPECT_EQ(readFile(server / "server.crt"), identity.certificatePem());
  EXPECT_EQ(readFile(server / "server.key"), identity.keyPem());
  EXPECT_TRUE(kelo->isRestartDue());
  EXPECT_EQ(filesLeft(), 0u);
}

TEST_F(ApplyCertificateTest, TwoFilesOfDifferentPairsDoNotMatch) {
  writeFile(uploads / "cert.der", identity.certificateDer());
  writeFile(uploads / "key.der", other.keyDer());
  EXPECT_EQ(apply(), "the certificate and private key in the uploaded files don't match");
  EXPECT_EQ(filesLeft(), 0u);
}

TEST_F(ApplyCertificateTest, TwoCertificatesLeaveTheKeySlotEmpty) {
  writeFile(uploads / "a.pem", identity.certificatePem());
  writeFile(uploads / "b.pem", other.certificatePem());
  EXPECT_EQ(apply(), "the certificate and private key in the uploaded files don't match");
}

TEST_F(ApplyCertificateTest, TwoFilesWhereOneHoldsBoth) {
  writeFile(uploads / "both.pem", identity.certificatePem() + identity.keyPem());
  writeFile(uploads / "key.pem", identity.keyPem());
  EXPECT_EQ(apply(),
            "two files uploaded, but one of them contains both certificate and private key");
  EXPECT_EQ(filesLeft(), 0u);
}

TEST_F(ApplyCertificateTest, TwoFilesWhereOneIsUnreadable) {
  writeFile(uploads / "cert.pem", identity.certificatePem());
  writeFile(uploads / "notes.txt", "nothing here");
  EXPECT_EQ(apply(), "not supported format");
  EXPECT_EQ(filesLeft(), 0u);
}

TEST_F(ApplyCertificateTest, AnEmptyFolderGivesTheCountZero) {
  EXPECT_EQ(apply(),
            "need 1 files containing certificate and private key or two files contining "
            "certificate and private key seperately. But 0 files uploaded in " +
                uploads.string());
}

TEST_F(ApplyCertificateTest, ThreeFilesStayAndTheMessageSaysThreeAndSubfoldersDoNotCount) {
  writeFile(uploads / "a.pem", identity.certificatePem());
  writeFile(uploads / "b.pem", identity.keyPem());
  writeFile(uploads / "c.pem", other.keyPem());
  std::filesystem::create_directories(uploads / "subfolder");
  EXPECT_EQ(apply(),
            "need 1 files containing certificate and private key or two files contining "
            "certificate and private key seperately. But 3 files uploaded in " +
                uploads.string());
  EXPECT_EQ(filesLeft(), 3u);
}

TEST_F(ApplyCertificateTest, ASubfolderBesideOneFileIsNotCounted) {
  std::filesystem::create_directories(uploads / "subfolder");
  writeFile(uploads / "server.pem", identity.certificatePem() + identity.keyPem());
  EXPECT_EQ(apply(), "");
}

TEST_F(ApplyCertificateTest, AKeyThatCannotBeWrittenLeavesTheNewCertificateBesideTheOldKey) {
  kelo->keyName = "missing/folder/server.key";
  writeFile(uploads / "server.pem", identity.certificatePem() + identity.keyPem());
  EXPECT_EQ(apply(), "couldn't save certificate files in PEM format.");
  EXPECT_EQ(readFile(server / "server.crt"), identity.certificatePem());
  EXPECT_EQ(readFile(server / "server.key"), "old key");
  EXPECT_FALSE(kelo->isRestartDue());
}

TEST_F(ApplyCertificateTest, AMissingKeyOfTheCommandIsMapAtAndAMissingFolderThrows) {
  ResourceAction action(CCRUD::Command, "/command/applyCertificate", Resource(), &info, "s");
  EXPECT_THROW(listener->ApplyCertificate(action), std::out_of_range);
  std::filesystem::remove_all(uploads);
  EXPECT_THROW(apply(), boost::filesystem::filesystem_error);
}

TEST_F(ApplyCertificateTest, TheListenerIsItsPatternAndTakesCommandsOnly) {
  EXPECT_EQ(static_cast<std::string>(*listener), "/command/applyCertificate");
  writeFile(uploads / "server.pem", identity.certificatePem() + identity.keyPem());
  Resource request;
  request.addValue("uploadTarget", ResourceValue(uploads.string()));
  request.addValue("password", ResourceValue(std::string()));
  ResourceAction action(CCRUD::Command, "/command/applyCertificate", request, &info, "s");
  listener->processResourceListener(tavelabi::TimePoint(), action);
  EXPECT_TRUE(kelo->isRestartDue());
}

}  // namespace
}  // namespace halvor::kelo::test
