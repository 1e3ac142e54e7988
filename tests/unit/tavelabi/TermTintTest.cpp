#include <gtest/gtest.h>

#include "tavelabi/TermTint.h"

namespace halvor {
namespace {

// Restores the process-wide colour setting after each test.
class TermTintTest : public ::testing::Test {
 protected:
  void SetUp() override { wasUsingColor_ = TermTint::isUsingColor(); }
  void TearDown() override { TermTint::useColor(wasUsingColor_); }

 private:
  bool wasUsingColor_ = false;
};

TEST_F(TermTintTest, SwitchesColour) {
  TermTint::useColor(true);
  EXPECT_TRUE(TermTint::isUsingColor());
  TermTint::useColor(false);
  EXPECT_FALSE(TermTint::isUsingColor());
}

TEST_F(TermTintTest, SequencesWhenOn) {
  TermTint::useColor(true);
  EXPECT_EQ(TermTint::color(0), "\033[0;0m");
  EXPECT_EQ(TermTint::color(32), "\033[0;32m");
  EXPECT_EQ(TermTint::bright_color(36), "\033[1;36m");
  EXPECT_EQ(TermTint::brightRed("fail"), "\033[1;31mfail\033[0;0m");
  EXPECT_EQ(TermTint::brightYellow("warn"), "\033[1;33mwarn\033[0;0m");
}

TEST_F(TermTintTest, PlainWhenOff) {
  TermTint::useColor(false);
  EXPECT_EQ(TermTint::color(32), "");
  EXPECT_EQ(TermTint::bright_color(36), "");
  EXPECT_EQ(TermTint::brightRed("fail"), "fail");
  EXPECT_EQ(TermTint::brightYellow("warn"), "warn");
}

TEST_F(TermTintTest, TitleFramesTheText) {
  TermTint::useColor(false);
  EXPECT_EQ(TitleTheme::request_title("Initializing Kelo ..."),
            "===== Initializing Kelo ... =====");
  TermTint::useColor(true);
  const std::string coloured = TitleTheme::request_title("x");
  EXPECT_NE(coloured.find("===== x ====="), std::string::npos);
  EXPECT_EQ(coloured.rfind("\033[1;", 0), 0U);
  EXPECT_EQ(coloured.substr(coloured.size() - 6), "\033[0;0m");
}

}  // namespace
}  // namespace halvor
