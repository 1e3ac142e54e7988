#include <gtest/gtest.h>
#include <json/value.h>

#include <chrono>
#include <stdexcept>
#include <string>

#include "sim/models/FixtureValues.h"

namespace halvor::sim {
namespace {

using namespace std::chrono_literals;

// The message that `read` throws, empty when it throws none.
template <class Read>
std::string refusalOf(Read read) {
  try {
    read();
  } catch (const std::invalid_argument& error) {
    return error.what();
  }
  return "";
}

Json::Value sectionWith(const std::string& key, const Json::Value& value) {
  Json::Value section(Json::objectValue);
  section[key] = value;
  return section;
}

TEST(FixtureValuesTest, ASectionThatIsNotAnObjectIsRefusedWithTheModelsName) {
  EXPECT_EQ(refusalOf([] { FixtureValues::requireObject(Json::Value(3), "presets"); }),
            "presets: the section must be an object");
  EXPECT_EQ(refusalOf([] { FixtureValues::requireObject(Json::Value(Json::objectValue), "x"); }),
            "");
}

TEST(FixtureValuesTest, AWholeNumberMayBeNegativeButNotText) {
  EXPECT_EQ(FixtureValues::wholeNumber(sectionWith("status", -3), "scheduler", "status"), -3);
  EXPECT_EQ(refusalOf([] {
              FixtureValues::wholeNumber(sectionWith("status", "3"), "scheduler", "status");
            }),
            "scheduler.status: a whole number");
}

TEST(FixtureValuesTest, ACountAndADelayAreZeroOrMore) {
  EXPECT_EQ(FixtureValues::count(sectionWith("polls", 0), "presets", "polls"), 0);
  EXPECT_EQ(FixtureValues::delay(sectionWith("delayMs", 250), "snmp", "delayMs"), 250ms);
  EXPECT_EQ(refusalOf([] { FixtureValues::count(sectionWith("polls", -1), "presets", "polls"); }),
            "presets.polls: a whole number, 0 or more");
  EXPECT_EQ(refusalOf([] { FixtureValues::delay(sectionWith("delayMs", 1.5), "snmp", "delayMs"); }),
            "snmp.delayMs: a whole number, 0 or more");
}

TEST(FixtureValuesTest, ADurationIsMoreThanZero) {
  EXPECT_EQ(FixtureValues::duration(sectionWith("ms", 40), "settings", "ms"), 40ms);
  EXPECT_EQ(refusalOf([] { FixtureValues::duration(sectionWith("ms", 0), "settings", "ms"); }),
            "settings.ms: a positive whole number");
}

TEST(FixtureValuesTest, AFlagIsTrueOrFalseAndNothingElse) {
  EXPECT_TRUE(FixtureValues::flag(sectionWith("applying", true), "snmp", "applying"));
  EXPECT_FALSE(FixtureValues::flag(sectionWith("applying", false), "snmp", "applying"));
  EXPECT_EQ(refusalOf([] { FixtureValues::flag(sectionWith("applying", 1), "snmp", "applying"); }),
            "snmp.applying: true or false");
}

}  // namespace
}  // namespace halvor::sim
