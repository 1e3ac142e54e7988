#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "tavelabi/Exceptions.h"
#include "tavelabi/JsonConfigLoader.h"

namespace halvor::tavelabi {
namespace {

// A file of its own in the temporary folder, removed at the end of the test.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& content) {
    char name[] = "/tmp/tavelabi-json-XXXXXX";
    int fd = mkstemp(name);
    if (fd < 0) throw std::runtime_error("mkstemp failed");
    close(fd);
    path_ = name;
    std::ofstream(path_, std::ios::binary) << content;
  }
  ~TemporaryFile() { std::remove(path_.c_str()); }
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

TEST(JsonConfigLoaderTest, ReadsFileWithComments) {
  TemporaryFile file(R"(// the plug-in's settings
{
  /* ports */
  "http_port": 8080,
  "name": "kelo", // trailing comment
  "list": [1, 2, 3]
})");
  Json::Value root = JsonConfigLoader::loadJsonConfigFile(file.path());
  EXPECT_EQ(root["http_port"].asInt(), 8080);
  EXPECT_EQ(root["name"].asString(), "kelo");
  ASSERT_EQ(root["list"].size(), 3U);
  EXPECT_EQ(root["list"][2].asInt(), 3);
}

TEST(JsonConfigLoaderTest, MissingFileThrowsJsonParserException) {
  const std::string path = "/tmp/tavelabi-no-such-dir/missing.json";
  try {
    (void)JsonConfigLoader::loadJsonConfigFile(path);
    FAIL() << "no exception";
  } catch (const JsonParserException& error) {
    EXPECT_EQ(std::string(error.what()),
              "Unable to read JSON file " + path + ": No such file or directory");
  }
}

TEST(JsonConfigLoaderTest, DirectoryThrowsJsonParserException) {
  try {
    (void)JsonConfigLoader::loadJsonConfigFile("/tmp");
    FAIL() << "no exception";
  } catch (const JsonParserException& error) {
    EXPECT_EQ(std::string(error.what()).rfind("Unable to read JSON file /tmp: ", 0), 0U)
        << error.what();
  }
}

TEST(JsonConfigLoaderTest, BadJsonThrowsBadlyFormedNamingTheFile) {
  TemporaryFile file("{ \"a\": 1, ");
  try {
    (void)JsonConfigLoader::loadJsonConfigFile(file.path());
    FAIL() << "no exception";
  } catch (const BadlyFormedJsonStringException& error) {
    const std::string text = error.what();
    EXPECT_EQ(text.rfind(file.path() + ": ", 0), 0U) << text;
    EXPECT_GT(text.size(), file.path().size() + 2) << "no parser message";
  }
}

TEST(JsonConfigLoaderTest, CommentAfterTheValueIsAllowed) {
  TemporaryFile file("{\"a\": [1]}\n// the end\n/* really */\n");
  EXPECT_EQ(JsonConfigLoader::loadJsonConfigFile(file.path())["a"][0].asInt(), 1);
}

TEST(JsonConfigLoaderTest, TextAfterTheValueIsBadlyFormed) {
  TemporaryFile file("{\"a\": 1} {\"b\": 2}");
  EXPECT_THROW((void)JsonConfigLoader::loadJsonConfigFile(file.path()),
               BadlyFormedJsonStringException);
}

TEST(JsonConfigLoaderTest, EmptyFileIsBadlyFormed) {
  TemporaryFile file("");
  EXPECT_THROW((void)JsonConfigLoader::loadJsonConfigFile(file.path()),
               BadlyFormedJsonStringException);
}

}  // namespace
}  // namespace halvor::tavelabi
