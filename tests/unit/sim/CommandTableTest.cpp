#include <gtest/gtest.h>

#include "sim/CommandTable.h"

namespace halvor::sim {
namespace {

using tavelabi::Resource;
using tavelabi::ResourceAction;
using tavelabi::ResourceValue;

CommandHandler answering(int value) {
  return [value](ResourceAction&) { return Resource(ResourceValue(value)); };
}

int run(const CommandTable& table, const std::string& path) {
  ResourceAction action(tavelabi::CCRUD::Command, path, nullptr, "");
  return (*table.find(path))(action).values.at("value").getIntValue();
}

TEST(CommandTableTest, FindsTheHandlerAndTheOwnerOfAPath) {
  CommandTable table;
  table.add({{"/a/command/one", answering(1)}, {"/a/command/two", answering(2)}}, "a");
  EXPECT_EQ(1, run(table, "/a/command/one"));
  EXPECT_EQ(2, run(table, "/a/command/two"));
  EXPECT_EQ("a", table.ownerOf("/a/command/two"));
  EXPECT_FALSE(table.find("/a/command/three").has_value());
  EXPECT_EQ("", table.ownerOf("/a/command/three"));
  EXPECT_EQ((std::vector<std::string>{"/a/command/one", "/a/command/two"}), table.paths());
}

TEST(CommandTableTest, ASecondRegistrationOfAPathIsRefusedAndAddsNothing) {
  CommandTable table;
  table.add({{"/x", answering(1)}}, "first");
  try {
    table.add({{"/y", answering(2)}, {"/x", answering(3)}}, "second");
    FAIL() << "no exception";
  } catch (const DuplicateCommandError& error) {
    EXPECT_STREQ("command /x of second is already served by first", error.what());
  }
  EXPECT_EQ(1, run(table, "/x"));
  EXPECT_FALSE(table.find("/y").has_value());
}

TEST(CommandTableTest, APathGivenTwiceInOneListIsRefused) {
  CommandTable table;
  EXPECT_THROW(table.add({{"/x", answering(1)}, {"/x", answering(2)}}, "twice"),
               DuplicateCommandError);
  EXPECT_TRUE(table.paths().empty());
}

}  // namespace
}  // namespace halvor::sim
