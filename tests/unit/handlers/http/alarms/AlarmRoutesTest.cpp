#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kelo/handlers/http/alarms/AlarmRoutes.h"
#include "kelo/handlers/http/alarms/GetActiveAlarms.h"
#include "kelo/handlers/http/alarms/GetAlarm.h"
#include "kelo/handlers/http/alarms/GetAllAlarms.h"
#include "support/HandlerTest.h"
#include "tavelabi/Exceptions.h"
#include "unit/handlers/http/alarms/AlarmTestResources.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;
using test::FakePluginInfo;
using test::installHost;
using test::listOf;
using test::makeRequest;
using test::RecordingHost;
using test::throughFrame;
using HandlerInfo = web::HttpAppFramework::HandlerInfo;

TEST(AlarmRoutesTest, RegistersThreeGetRoutesUnderTheVersionPrefix) {
  web::HttpAppFramework application;
  AlarmRoutes::registerAlarmRoutes(application);
  const std::vector<HandlerInfo> expected = {
      {"/1/api/alarms", web::Get, "GetAllAlarms"},
      {"/1/api/alarms/active", web::Get, "GetActiveAlarms"},
      {"/1/api/alarms/alarm", web::Get, "GetAlarm"},
  };
  EXPECT_EQ(application.getHandlersInfo(), expected);
}

// ---- through the frame ----

class AlarmFrameTest : public ::testing::Test {
 protected:
  void SetUp() override { installHost(&host, &info); }

  static web::HttpRequestPtr request(const std::string& path, const std::string& query) {
    web::HttpRequestPtr req = makeRequest(web::Get, path, query);
    req->addHeader("Cookie", "SessionID=client-1");
    return req;
  }
  static bool mentions(const web::HttpResponsePtr& resp, const std::string& text) {
    return resp->body().find(text) != std::string::npos;
  }

  RecordingHost host;
  FakePluginInfo info;
};

TEST_F(AlarmFrameTest, MissingPathIs500NamingTheParameter) {
  GetAlarm handler;
  const web::HttpResponsePtr resp = throughFrame(handler, request("/1/api/alarms/alarm", ""));
  EXPECT_EQ(resp->statusCode(), 500);
  EXPECT_TRUE(mentions(resp, "Request missing query parameter: path.")) << resp->body();
  EXPECT_TRUE(host.actions().empty());
}

TEST_F(AlarmFrameTest, AnEmptyActiveListIs200) {
  host.answer("/system/alarms/active", listOf({}));
  GetActiveAlarms handler;
  const web::HttpResponsePtr resp = throughFrame(handler, request("/1/api/alarms/active", ""));
  EXPECT_EQ(resp->statusCode(), 200);
  EXPECT_EQ(resp->body(), R"({"alarms":[]})");
  EXPECT_EQ(host.onlyAction().sessionId, "client-1");
}

TEST_F(AlarmFrameTest, AVanishedAlarmIs500WithTheHostsText) {
  host.answer(CCRUD::Command, "/resource/list", listOf({"/alarms/fan/list"}));
  host.answer("/alarms/fan/list", listOf({"/alarms/fan/1/stalled"}));
  host.fail("/alarms/fan/1/stalled", [] {
    throw tavelabi::NonExistentResourcePathException("No resource at /alarms/fan/1/stalled");
  });
  GetAllAlarms handler;
  const web::HttpResponsePtr resp = throughFrame(handler, request("/1/api/alarms", ""));
  EXPECT_EQ(resp->statusCode(), 500);
  EXPECT_TRUE(mentions(resp, "No resource at /alarms/fan/1/stalled")) << resp->body();
}

TEST_F(AlarmFrameTest, DeviceIdWithoutDeviceNameIs500WithMapAt) {
  host.answer("/alarms/a", Resource("deviceId", ResourceValue("1")));
  GetAlarm handler;
  const web::HttpResponsePtr resp =
      throughFrame(handler, request("/1/api/alarms/alarm", "path=%2Falarms%2Fa"));
  EXPECT_EQ(resp->statusCode(), 500);
  EXPECT_TRUE(mentions(resp, "map::at")) << resp->body();
}

TEST_F(AlarmFrameTest, ADeadSessionIs440) {
  host.fail("/system/alarms/active",
            [] { throw tavelabi::NonExistentSessionException("Session client-1 does not exist"); });
  GetActiveAlarms handler;
  const web::HttpResponsePtr resp = throughFrame(handler, request("/1/api/alarms/active", ""));
  EXPECT_EQ(resp->statusCode(), 440);
  EXPECT_TRUE(resp->body().empty());
}

}  // namespace
}  // namespace halvor::kelo
