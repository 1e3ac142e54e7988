#include <gtest/gtest.h>

#include <vector>

#include "sim/CommandLine.h"

namespace halvor::sim {
namespace {

CommandLineOptions parse(std::vector<const char*> args) {
  args.insert(args.begin(), "tavel-sim");
  return CommandLine::parse(static_cast<int>(args.size()), args.data());
}

std::string errorOf(std::vector<const char*> args) {
  try {
    parse(std::move(args));
  } catch (const CommandLineError& error) {
    return error.what();
  }
  return "no error";
}

TEST(CommandLineTest, ReadsEveryOption) {
  CommandLineOptions options = parse(
      {"--plugin",     "p.so",     "--log-config",    "log.conf",  "--config",          "c.json",
       "--web-config", "w.json",   "--fixture",       "a.json",    "--fixture",         "b.json",
       "--session",    "S1=admin", "--session",       "S2=viewer", "--session-timeout", "30",
       "--plugin-id",  "4",        "--no-demo-models"});
  EXPECT_EQ("p.so", options.pluginPath);
  EXPECT_EQ("log.conf", options.logConfigFile);
  EXPECT_EQ("c.json", options.configFile);
  EXPECT_EQ("w.json", options.webConfigFile);
  EXPECT_EQ((std::vector<std::string>{"a.json", "b.json"}), options.fixtureFiles);
  ASSERT_EQ(2u, options.sessions.size());
  EXPECT_EQ("S2", options.sessions[1].first);
  EXPECT_EQ("viewer", options.sessions[1].second);
  EXPECT_EQ(30, options.sessionTimeoutSeconds);
  EXPECT_EQ(4u, options.pluginId);
  EXPECT_FALSE(options.demoModels);
}

TEST(CommandLineTest, Defaults) {
  CommandLineOptions options = parse({"--plugin", "p.so", "--log-config", "l", "--config", "c"});
  EXPECT_EQ(1u, options.pluginId);
  EXPECT_TRUE(options.demoModels);
  EXPECT_FALSE(options.sessionTimeoutSeconds.has_value());
  EXPECT_TRUE(options.fixtureFiles.empty());
}

TEST(CommandLineTest, HelpNeedsNothingElse) { EXPECT_TRUE(parse({"--help"}).help); }

TEST(CommandLineTest, ErrorsSayWhatIsWrong) {
  EXPECT_NE(std::string::npos, errorOf({"--log-config", "l", "--config", "c"}).find("--plugin"));
  EXPECT_NE(std::string::npos, errorOf({"--plugin", "p", "--config", "c"}).find("--log-config"));
  EXPECT_NE(std::string::npos, errorOf({"--plugin"}).find("--plugin needs a value"));
  EXPECT_NE(std::string::npos, errorOf({"--bogus", "x"}).find("unknown option --bogus"));
  EXPECT_NE(std::string::npos, errorOf({"--session", "nouser"}).find("ID=USER"));
  EXPECT_NE(std::string::npos, errorOf({"--session", "=u"}).find("ID=USER"));
  EXPECT_NE(std::string::npos, errorOf({"--session-timeout", "0"}).find("--session-timeout"));
  EXPECT_NE(std::string::npos, errorOf({"--plugin-id", "x1"}).find("--plugin-id"));
}

TEST(CommandLineTest, UsageNamesEveryOption) {
  std::string usage = CommandLine::usage();
  for (const char* option :
       {"--plugin", "--log-config", "--config", "--web-config", "--fixture", "--session ",
        "--session-timeout", "--plugin-id", "--no-demo-models", "--help"}) {
    EXPECT_NE(std::string::npos, usage.find(option)) << option;
  }
}

}  // namespace
}  // namespace halvor::sim
