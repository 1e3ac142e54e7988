#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>

#include "sim/FixtureLoader.h"

namespace halvor::sim {
namespace {

using tavelabi::ResourceValueType;

std::string errorOf(const std::string& text) {
  try {
    FixtureLoader::parse(text, "fixtures/test.json");
  } catch (const FixtureError& error) {
    return error.what();
  }
  return "no error";
}

TEST(FixtureLoaderTest, ReadsUsersResourcesRulesAndTimeout) {
  Fixture fixture = FixtureLoader::parse(R"({
    // comments are allowed
    "users": [
      {"name": "admin", "password": "pw", "role": "administrator"},
      {"name": "wall", "password": "pw2", "role": "read-only", "autoLoginHosts": ["lobby"]}
    ],
    "resources": {
      "/system/name": {"value": {"string": "TX-1"}},
      "/px3/all": {"i": {"int": -4}, "f": {"float": 1.5}, "d": {"double": 2.5},
                   "b": {"bool": true}, "y": {"bytes": [1, 2, 3]},
                   "l": {"list": [{"int": 1}, {"list": [{"string": "n"}]}]},
                   "m": {"map": {"inner": {"map": {"x": {"int": 9}}}}},
                   "u": {"unspecified": null}}
    },
    "autoLogin": [{"host": "10.0.0.5", "user": "admin"}],
    "sessionTimeoutSeconds": 60
  })",
                                         "inline");
  ASSERT_EQ(2u, fixture.users.size());
  EXPECT_EQ("wall", fixture.users[1].name);
  EXPECT_EQ("read-only", fixture.users[1].role);
  EXPECT_EQ(std::vector<std::string>{"lobby"}, fixture.users[1].autoLoginHosts);
  ASSERT_EQ(2u, fixture.resources.size());
  const tavelabi::Resource* all = nullptr;
  for (const auto& [path, resource] : fixture.resources) {
    if (path == "/px3/all") all = &resource;
  }
  ASSERT_NE(nullptr, all);
  EXPECT_EQ(ResourceValueType::INT32, all->values.at("i").getType());
  EXPECT_EQ(ResourceValueType::FLOAT, all->values.at("f").getType());
  EXPECT_EQ(ResourceValueType::DOUBLE, all->values.at("d").getType());
  EXPECT_EQ(ResourceValueType::BOOL, all->values.at("b").getType());
  EXPECT_EQ(ResourceValueType::UINT8_ARRAY, all->values.at("y").getType());
  EXPECT_EQ(ResourceValueType::LIST_VALUE, all->values.at("l").getType());
  EXPECT_EQ("n", all->values.at("l").getListValue()[1].getListValue()[0].getStringValue());
  EXPECT_EQ(9, all->values.at("m").getMapValue().at("inner").getMapValue().at("x").getIntValue());
  EXPECT_EQ(ResourceValueType::UNSPECIFIED_RESOURCE_TYPE, all->values.at("u").getType());
  ASSERT_EQ(1u, fixture.autoLogin.size());
  EXPECT_EQ("10.0.0.5", fixture.autoLogin[0].host);
  EXPECT_EQ(60, fixture.sessionTimeoutSeconds);
}

TEST(FixtureLoaderTest, BadJsonGivesOneLineNamingTheFile) {
  std::string error = errorOf("{\"users\": [\n  {\"name\": }\n]}");
  EXPECT_EQ(0u, error.find("fixtures/test.json: not valid JSON: ")) << error;
  EXPECT_NE(std::string::npos, error.find("Line 2")) << error;
  EXPECT_EQ(std::string::npos, error.find('\n')) << error;
}

TEST(FixtureLoaderTest, WrongShapesAreNamed) {
  EXPECT_NE(std::string::npos, errorOf("[]").find("a fixture is a JSON object"));
  EXPECT_NE(std::string::npos, errorOf(R"({"user": []})").find("unknown key \"user\""));
  EXPECT_NE(std::string::npos,
            errorOf(R"({"users": [{"name": "a", "password": "b", "role": "boss"}]})")
                .find("unknown role \"boss\""));
  EXPECT_NE(std::string::npos,
            errorOf(R"({"users": [{"name": "a", "role": "operator"}]})").find("\"password\""));
  EXPECT_NE(std::string::npos,
            errorOf(R"({"resources": {"/a": {"v": {"int": "x"}}}})").find("/a.v"));
  EXPECT_NE(std::string::npos, errorOf(R"({"resources": {"a": {}}})").find("must start with /"));
  EXPECT_NE(std::string::npos,
            errorOf(R"({"sessionTimeoutSeconds": 0})").find("sessionTimeoutSeconds"));
}

TEST(FixtureLoaderTest, SectionsOfModelsAreKeptAsWrittenAndOtherKeysRefused) {
  Fixture fixture =
      FixtureLoader::parse(R"({"meter": {"peak": 42}, "resources": {"/a": {"value": {"int": 1}}}})",
                           "fixtures/test.json", {"meter", "alarm"});
  ASSERT_EQ(1u, fixture.sections.size());
  EXPECT_EQ("meter", fixture.sections[0].first);
  EXPECT_EQ(42, fixture.sections[0].second["peak"].asInt());
  EXPECT_EQ(1u, fixture.resources.size());
  try {
    FixtureLoader::parse(R"({"meters": {}})", "fixtures/test.json", {"meter"});
    FAIL() << "no exception";
  } catch (const FixtureError& error) {
    EXPECT_STREQ("fixtures/test.json: unknown key \"meters\"", error.what());
  }
}

TEST(FixtureLoaderTest, ModelsToRunAreATextList) {
  Fixture fixture = FixtureLoader::parse(R"({"models": ["eventlog", "meter"]})", "inline");
  EXPECT_EQ((std::vector<std::string>{"eventlog", "meter"}), fixture.models);
  EXPECT_TRUE(FixtureLoader::parse("{}", "inline").models.empty());
  EXPECT_NE(std::string::npos, errorOf(R"({"models": "eventlog"})").find("\"models\""));
  EXPECT_NE(std::string::npos, errorOf(R"({"models": [1]})").find("array of texts"));
}

TEST(FixtureLoaderTest, FileThatCannotBeReadIsNamed) {
  try {
    FixtureLoader::loadFile("/nonexistent/dir/fixture.json");
    FAIL() << "no exception";
  } catch (const FixtureError& error) {
    EXPECT_STREQ("/nonexistent/dir/fixture.json: cannot be read", error.what());
  }
}

TEST(FixtureLoaderTest, LoadsAFileFromDisk) {
  std::string path = ::testing::TempDir() + "fixture-loader-test.json";
  {
    std::ofstream file(path);
    file << R"({"resources": {"/a": {"value": {"int": 1}}}})";
  }
  Fixture fixture = FixtureLoader::loadFile(path);
  EXPECT_EQ(path, fixture.source);
  ASSERT_EQ(1u, fixture.resources.size());
  std::remove(path.c_str());
}

}  // namespace
}  // namespace halvor::sim
