#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "tavelabi/Exceptions.h"
#include "tavelabi/Session.h"

namespace halvor::tavelabi {
namespace {

TEST(SessionTest, TakesAllFourFields) {
  Resource resource;
  resource.addValue("sessionId", ResourceValue("abc"));
  resource.addValue("username", ResourceValue("kelo"));
  resource.addValue("host", ResourceValue("127.0.0.1"));
  resource.addValue("created", ResourceValue("2026-01-01T00:00:00Z"));
  Session session = Session::convertResourceToSession(resource);
  EXPECT_EQ(session.sessionId, "abc");
  EXPECT_EQ(session.username, "kelo");
  EXPECT_EQ(session.host, "127.0.0.1");
  EXPECT_EQ(session.created, "2026-01-01T00:00:00Z");
}

TEST(SessionTest, OptionalFieldsMayBeAbsent) {
  Session session = Session::convertResourceToSession(Resource("sessionId", ResourceValue("id")));
  EXPECT_EQ(session.sessionId, "id");
  EXPECT_EQ(session.username, "");
  EXPECT_EQ(session.host, "");
  EXPECT_EQ(session.created, "");
}

TEST(SessionTest, MissingSessionIdThrowsMapAt) {
  Resource resource("username", ResourceValue("kelo"));
  try {
    (void)Session::convertResourceToSession(resource);
    FAIL() << "no exception";
  } catch (const std::out_of_range& error) {
    EXPECT_NE(std::string(error.what()).find("map::at"), std::string::npos) << error.what();
  }
}

TEST(SessionTest, SessionIdOfWrongTypeThrows) {
  EXPECT_THROW((void)Session::convertResourceToSession(Resource("sessionId", ResourceValue(3))),
               WrongResourceValueType);
}

TEST(SessionTest, OptionalFieldOfWrongTypeIsLeftEmpty) {
  Resource resource("sessionId", ResourceValue("id"));
  resource.addValue("username", ResourceValue(5));
  Session session = Session::convertResourceToSession(resource);
  EXPECT_EQ(session.username, "");
}

}  // namespace
}  // namespace halvor::tavelabi
