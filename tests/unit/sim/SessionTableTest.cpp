#include <gtest/gtest.h>

#include <set>

#include "SimTestSupport.h"
#include "sim/SessionTable.h"
#include "tavelabi/Exceptions.h"

namespace halvor::sim {
namespace {

using namespace std::chrono_literals;
using kelo::test::ManualClock;

TEST(SessionTableTest, NewSessionsHaveDistinctRandomHexIdentifiers) {
  SessionTable table({}, 900s);
  std::set<std::string> seen;
  for (int i = 0; i < 200; ++i) {
    std::string id = table.create(false).sessionId;
    EXPECT_EQ(32u, id.size());
    EXPECT_EQ(std::string::npos, id.find_first_not_of("0123456789abcdef"));
    seen.insert(id);
  }
  EXPECT_EQ(200u, seen.size());
}

TEST(SessionTableTest, UnknownAndEmptyIdentifiersThrowWithTheIdentifier) {
  SessionTable table({}, 900s);
  try {
    table.check("abc", true);
    FAIL() << "no exception";
  } catch (const tavelabi::NonExistentSessionException& error) {
    EXPECT_STREQ("Session abc does not exist", error.what());
  }
  EXPECT_THROW(table.check("", true), tavelabi::NonExistentSessionException);
}

TEST(SessionTableTest, IdleSessionExpiresAfterTheTimeout) {
  ManualClock clock;
  SessionTable table(clock.function(), 10s);
  std::string id = table.create(false).sessionId;
  clock.advance(10s);
  EXPECT_NO_THROW(table.check(id, false));  // exactly the timeout is not longer than it
  clock.advance(1ms);
  EXPECT_THROW(table.check(id, false), tavelabi::NonExistentSessionException);
  EXPECT_EQ(0u, table.size());
}

TEST(SessionTableTest, ActivityKeepsTheSessionAliveAndBypassDoesNot) {
  ManualClock clock;
  SessionTable table(clock.function(), 10s);
  std::string id = table.create(false).sessionId;
  for (int i = 0; i < 5; ++i) {
    clock.advance(8s);
    EXPECT_NO_THROW(table.check(id, true));
  }
  clock.advance(8s);
  EXPECT_NO_THROW(table.check(id, false));  // not counted
  clock.advance(3s);
  EXPECT_THROW(table.check(id, false), tavelabi::NonExistentSessionException);
}

TEST(SessionTableTest, PluginSessionsNeverExpire) {
  ManualClock clock;
  SessionTable table(clock.function(), 1s);
  std::string id = table.create(true).sessionId;
  clock.advance(std::chrono::hours(24 * 365));
  EXPECT_EQ(0u, table.expireIdle());
  EXPECT_NO_THROW(table.check(id, false));
}

TEST(SessionTableTest, ExpireIdleRemovesOnlyIdleSessions) {
  ManualClock clock;
  SessionTable table(clock.function(), 10s);
  std::string idle = table.create(false).sessionId;
  clock.advance(6s);
  std::string busy = table.create(false).sessionId;
  clock.advance(6s);
  EXPECT_EQ(1u, table.expireIdle());
  EXPECT_FALSE(table.find(idle).has_value());
  EXPECT_TRUE(table.find(busy).has_value());
}

TEST(SessionTableTest, LoginSetsUserAndLogoutEnds) {
  SessionTable table({}, 900s);
  std::string id = table.create(false).sessionId;
  EXPECT_FALSE(table.check(id, true).loggedIn);
  SessionRecord record = table.login(id, "alice");
  EXPECT_TRUE(record.loggedIn);
  EXPECT_EQ("alice", table.check(id, true).username);
  table.end(id);
  EXPECT_THROW(table.check(id, true), tavelabi::NonExistentSessionException);
  EXPECT_THROW(table.login(id, "alice"), tavelabi::NonExistentSessionException);
}

TEST(SessionTableTest, CheckUserAnswersTheLoginAndCountsActivityAsCheckDoes) {
  ManualClock clock;
  SessionTable table(clock.function(), 10s);
  std::string id = table.create(false).sessionId;
  EXPECT_FALSE(table.checkUser(id, true).loggedIn);
  EXPECT_EQ("", table.checkUser(id, true).username);
  table.login(id, "alice");
  const SessionUser user = table.checkUser(id, true);
  EXPECT_TRUE(user.loggedIn);
  EXPECT_EQ("alice", user.username);
  clock.advance(8s);
  EXPECT_NO_THROW(table.checkUser(id, true));
  clock.advance(8s);
  EXPECT_NO_THROW(table.checkUser(id, false));  // not counted
  clock.advance(3s);
  try {
    table.checkUser(id, false);
    FAIL() << "no exception";
  } catch (const tavelabi::NonExistentSessionException& error) {
    EXPECT_EQ("Session " + id + " does not exist", std::string(error.what()));
  }
  EXPECT_EQ(0u, table.size());
}

TEST(SessionTableTest, GivenIdentifierIsUsedAndMustBeFree) {
  SessionTable table({}, 900s);
  EXPECT_EQ("fixed-id", table.create(false, "fixed-id").sessionId);
  EXPECT_THROW(table.create(false, "fixed-id"), std::invalid_argument);
}

}  // namespace
}  // namespace halvor::sim
