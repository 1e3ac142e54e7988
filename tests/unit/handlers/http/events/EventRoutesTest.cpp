#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "kelo/controllers/RouteTable.h"
#include "kelo/handlers/http/events/DeleteEvent.h"
#include "kelo/handlers/http/events/EventRoutes.h"
#include "kelo/handlers/http/events/GenerateCsvHandler.h"
#include "support/HandlerTest.h"
#include "tavelabi/Exceptions.h"

namespace halvor::kelo {
namespace {

using test::FakePluginInfo;
using test::installHost;
using test::makeRequest;
using test::RecordingHost;
using test::throughFrame;
using HandlerInfo = web::HttpAppFramework::HandlerInfo;

TEST(EventRoutesTest, RegistersThreeRoutesUnderTheVersionPrefix) {
  web::HttpAppFramework application;
  EventRoutes::registerEventRoutes(application);
  const std::vector<HandlerInfo> expected = {
      {"/1/api/events/paged", web::Get, "GetEventLogsHandler"},
      {"/1/api/events", web::Delete, "DeleteEvent::deleteEventWrapper"},
      {"/1/api/events/generateCsv", web::Post, "GenerateCsvHandler"},
  };
  EXPECT_EQ(application.getHandlersInfo(), expected);
}

// ---- through the frame ----

class EventFrameTest : public ::testing::Test {
 protected:
  void SetUp() override { installHost(&host, &info); }

  web::HttpResponsePtr deleteThroughWrapper(const std::string& cookie) {
    web::HttpRequestPtr req = makeRequest(web::Delete, "/1/api/events", "");
    if (!cookie.empty()) req->addHeader("Cookie", "SessionID=" + cookie);
    auto wrapper = RouteTable<DeleteEvent>::wrapperOf(std::make_shared<DeleteEvent>(),
                                                      &DeleteEvent::deleteEvent);
    web::HttpResponsePtr answered;
    wrapper(req, [&answered](const web::HttpResponsePtr& resp) { answered = resp; });
    return answered;
  }

  RecordingHost host;
  FakePluginInfo info;
};

TEST_F(EventFrameTest, DeleteAnswers200WithEmptyBodyAndEchoesTheCookie) {
  host.answer("/command/eventlog/deleteEvents", tavelabi::Resource());
  const web::HttpResponsePtr resp = deleteThroughWrapper("abc");
  ASSERT_TRUE(resp);
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->body(), "");
  EXPECT_EQ(resp->getCookie("SessionID"), "abc;Path=/");
  EXPECT_EQ(host.onlyAction().sessionId, "abc");
}

TEST_F(EventFrameTest, DeleteRefusedByTheHostIs403) {
  host.fail("/command/eventlog/deleteEvents", [] {
    throw tavelabi::AuthorizationFailure(
        "User viewer may not Command /command/eventlog/deleteEvents");
  });
  const web::HttpResponsePtr resp = deleteThroughWrapper("v");
  EXPECT_EQ(resp->statusCode(), 403);
  EXPECT_EQ(resp->body(), "");
}

TEST_F(EventFrameTest, GenerateCsvAnswers200WithEmptyBody) {
  host.answer("/command/eventlog/generateCsv", tavelabi::Resource("value", "/files/eventlog.csv"));
  GenerateCsvHandler handler;
  const web::HttpResponsePtr resp =
      throughFrame(handler, makeRequest(web::Post, "/1/api/events/generateCsv", "type=1"));
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->body(), "");
}

TEST_F(EventFrameTest, GenerateCsvWithoutSessionIs440) {
  host.fail("/command/eventlog/generateCsv",
            [] { throw tavelabi::NonExistentSessionException("Session  does not exist"); });
  GenerateCsvHandler handler;
  const web::HttpResponsePtr resp =
      throughFrame(handler, makeRequest(web::Post, "/1/api/events/generateCsv", ""));
  EXPECT_EQ(resp->statusCode(), 440);
  EXPECT_TRUE(resp->ifCloseConnection());
}

}  // namespace
}  // namespace halvor::kelo
