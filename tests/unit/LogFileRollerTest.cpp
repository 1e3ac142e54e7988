#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "kelo/KeloLog.h"
#include "kelo/LogFileRoller.h"

using halvor::kelo::LogFileRoller;
namespace fs = std::filesystem;

namespace {

class LogFileRollerTest : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/kelo-roll-XXXXXX";
    ASSERT_NE(::mkdtemp(pattern), nullptr);
    directory = pattern;
  }
  void TearDown() override { fs::remove_all(directory); }

  static void write(const fs::path& file, const std::string& text) { std::ofstream(file) << text; }
  static std::string read(const fs::path& file) {
    std::ifstream in(file);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
  }
  std::size_t fileCount() const {
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator(directory), fs::directory_iterator()));
  }

  fs::path directory;
};

TEST_F(LogFileRollerTest, EachRollShiftsTheOldFilesAndDropsTheOldest) {
  const fs::path log = directory / "Kelo3.log";
  for (int round = 1; round <= 7; ++round) {
    write(log, "round " + std::to_string(round));
    LogFileRoller::rollOut(log.c_str(), 7);
  }
  EXPECT_FALSE(fs::exists(log));
  EXPECT_EQ(read(directory / "Kelo3.log.1"), "round 7");
  EXPECT_EQ(read(directory / "Kelo3.log.2"), "round 6");
  EXPECT_EQ(read(directory / "Kelo3.log.4"), "round 4");
  EXPECT_FALSE(fs::exists(directory / "Kelo3.log.5"));
  EXPECT_EQ(fileCount(), static_cast<std::size_t>(LogFileRoller::kKeptFiles - 1));
}

TEST_F(LogFileRollerTest, ALoggerWithAMaximumSizeRollsAndKeepsABoundedNumberOfFiles) {
  const fs::path log = directory / "Roller1.log";
  el::Configurations configuration;
  configuration.setToDefault();
  configuration.parseFromText(
      "*GLOBAL:\n FORMAT = %msg\n TO_STANDARD_OUTPUT = false\n"
      " TO_FILE = true\n MAX_LOG_FILE_SIZE = 2048\n FILENAME = " +
      log.string() + "\n");
  el::Logger* logger = el::Loggers::getLogger("Roller1", true);
  el::Loggers::reconfigureLogger(logger, configuration);
  LogFileRoller::install();
  const std::string line(100, 'x');
  for (int i = 0; i < 400; ++i) KELO_LOG(ERROR, "Roller1") << i << " " << line;
  logger->flush();
  el::Loggers::unregisterLogger("Roller1");

  EXPECT_EQ(fileCount(), static_cast<std::size_t>(LogFileRoller::kKeptFiles));
  EXPECT_TRUE(fs::exists(directory / "Roller1.log.4"));
  for (const auto& entry : fs::directory_iterator(directory)) {
    // A line may pass the size before the check on the next line rolls the file.
    EXPECT_LE(fs::file_size(entry.path()), 2048u + 2 * 110u) << entry.path();
  }
  // The newest lines are in the current file or the one just rolled, the oldest are gone.
  EXPECT_NE((read(directory / "Roller1.log.1") + read(log)).find("399 "), std::string::npos);
  EXPECT_EQ(read(directory / "Roller1.log.4").find("\n0 "), std::string::npos);
}

}  // namespace
