#include <gtest/gtest.h>

#include <stdexcept>

#include "kelo/handlers/toolkit/HostReads.h"
#include "support/FakePluginInfo.h"
#include "support/RecordingHost.h"
#include "support/Requests.h"
#include "tavelabi/Exceptions.h"

namespace halvor::kelo::test {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;

class HostReadsTest : public ::testing::Test {
 protected:
  web::HttpRequestPtr req = makeRequest(web::Get, "/1/api/anything", "");
  RecordingHost host;
  FakePluginInfo info;
};

TEST_F(HostReadsTest, APlainReadCarriesNoRequestValuesAndTheClientsSession) {
  host.answer("/a", Resource("value", 4));
  const Resource answer = HostReads::read(req, &host, &info, "s1", "/a");
  EXPECT_EQ(answer.values.at("value").getIntValue(), 4);
  const tavelabi::ResourceAction action = host.onlyAction();
  EXPECT_EQ(action.action, CCRUD::Read);
  EXPECT_EQ(action.sessionId, "s1");
  EXPECT_EQ(action.pluginInfo, &info);
  EXPECT_TRUE(action.resource.values.empty());
  EXPECT_TRUE(action.isLocalHost);
}

TEST_F(HostReadsTest, TheBypassingReadSaysSoToTheHost) {
  host.answer("/a", Resource());
  HostReads::readBypassingActivity(req, &host, &info, "s1", "/a");
  const tavelabi::ResourceAction action = host.onlyAction();
  ASSERT_EQ(action.resource.values.size(), 1u);
  EXPECT_TRUE(action.resource.values.at("byPassSessionActivityTimerUpdate").getBoolValue());
}

TEST_F(HostReadsTest, AFlaggedReadCanCountAsActivity) {
  host.answer("/a", Resource());
  HostReads::readFlagged(req, &host, &info, "s1", "/a", false);
  EXPECT_FALSE(
      host.onlyAction().resource.values.at("byPassSessionActivityTimerUpdate").getBoolValue());
}

TEST_F(HostReadsTest, EachEntryOfAListIsReadInOrder) {
  host.answer("/list", Resource(std::vector<std::string>{"/b", "/a"}));
  host.answer("/a", Resource("value", 1));
  host.answer("/b", Resource("value", 2));
  const std::vector<int> values =
      HostReads::readEach(req, &host, &info, "s1", "/list", [&](const std::string& path) {
        return HostReads::read(req, &host, &info, "s1", path).values.at("value").getIntValue();
      });
  EXPECT_EQ(values, (std::vector<int>{2, 1}));
  const auto actions = host.actions();
  ASSERT_EQ(actions.size(), 3u);
  EXPECT_EQ(actions[0].path, "/list");
  EXPECT_EQ(actions[1].path, "/b");
  EXPECT_EQ(actions[2].path, "/a");
}

TEST_F(HostReadsTest, AnEmptyListReadsNothingMore) {
  host.answer("/list", Resource(ResourceValue(std::vector<std::string>{})));
  const auto texts = HostReads::readTexts(req, &host, &info, "s1", "/list");
  EXPECT_TRUE(texts.empty());
  EXPECT_EQ(host.actions().size(), 1u);
}

TEST_F(HostReadsTest, AListWithoutValueIsMapAt) {
  host.answer("/list", Resource("other", 1));
  try {
    HostReads::readTexts(req, &host, &info, "s1", "/list");
    FAIL() << "no exception";
  } catch (const std::out_of_range& error) {
    EXPECT_STREQ(error.what(), "map::at");
  }
}

TEST_F(HostReadsTest, AFailedEntryEndsTheWalk) {
  host.answer("/list", Resource(std::vector<std::string>{"/a", "/gone", "/c"}));
  host.answer("/a", Resource());
  host.fail("/gone",
            [] { throw tavelabi::NonExistentSessionException("Session s1 does not exist"); });
  EXPECT_THROW(HostReads::readEach(req, &host, &info, "s1", "/list",
                                   [&](const std::string& path) {
                                     return HostReads::read(req, &host, &info, "s1", path);
                                   }),
               tavelabi::NonExistentSessionException);
  EXPECT_TRUE(host.actionsOn("/c").empty());
}

}  // namespace
}  // namespace halvor::kelo::test
