#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kelo/handlers/http/alarms/GetAllAlarms.h"
#include "support/HandlerTest.h"
#include "tavelabi/Exceptions.h"
#include "unit/handlers/http/alarms/AlarmTestResources.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using test::FakePluginInfo;
using test::fullAlarm;
using test::listOf;

class GetAllAlarmsTest : public test::HandlerTest<GetAllAlarms> {
 protected:
  web::HttpResponsePtr get(const std::string& sessionId = "client-1") {
    return call(host, web::Get, "/1/api/alarms", "", "", sessionId);
  }
  void twoLists() {
    host.answer(CCRUD::Command, "/resource/list",
                listOf({"/alarms/exciter/list", "/alarms/fan/list"}));
    host.answer("/alarms/exciter/list", listOf({"/alarms/exciter/1/pll"}));
    host.answer("/alarms/fan/list", listOf({"/alarms/fan/2/stalled", "/alarms/exciter/1/pll"}));
    host.answer("/alarms/exciter/1/pll", fullAlarm("/alarms/exciter/1/pll", true, "exciter", "1"));
    host.answer("/alarms/fan/2/stalled", fullAlarm("/alarms/fan/2/stalled", false, "fan", "2"));
  }
};

TEST_F(GetAllAlarmsTest, ListsUnderThePluginsSessionAndReadsUnderTheClients) {
  twoLists();
  get("client-1");
  const std::vector<tavelabi::ResourceAction> actions = host.actions();
  ASSERT_EQ(actions.size(), 6u);

  const tavelabi::ResourceAction& list = actions[0];
  EXPECT_EQ(list.action, CCRUD::Command);
  EXPECT_EQ(list.path, "/resource/list");
  EXPECT_EQ(list.sessionId, FakePluginInfo::kSessionId);
  EXPECT_EQ(list.pluginInfo, &info);
  ASSERT_EQ(list.resource.values.size(), 1u);
  EXPECT_EQ(list.resource.values.at("value").getStringValue(), "/alarms/**/list");

  const std::vector<std::string> reads = {"/alarms/exciter/list", "/alarms/exciter/1/pll",
                                          "/alarms/fan/list", "/alarms/fan/2/stalled",
                                          "/alarms/exciter/1/pll"};
  for (std::size_t i = 0; i < reads.size(); ++i) {
    EXPECT_EQ(actions[i + 1].action, CCRUD::Read);
    EXPECT_EQ(actions[i + 1].path, reads[i]);
    EXPECT_EQ(actions[i + 1].sessionId, "client-1");
  }
}

TEST_F(GetAllAlarmsTest, AnswersEveryAlarmInListOrderKeepingDuplicates) {
  twoLists();
  const web::HttpResponsePtr resp = get();
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->contentType(), web::CT_APPLICATION_JSON);
  const std::string pll =
      R"({"path":"/alarms/exciter/1/pll","active":true,"description":"Heat sink above 80 C",)"
      R"("name":"Over temperature","time":"2026-01-31T12:34:56Z",)"
      R"("device":{"guid":"exciter-1","name":"exciter"},"severity":"REDUCED_POWER"})";
  const std::string stalled =
      R"({"path":"/alarms/fan/2/stalled","active":false,"description":"Heat sink above 80 C",)"
      R"("name":"Over temperature","time":"2026-01-31T12:34:56Z",)"
      R"("device":{"guid":"fan-2","name":"fan"},"severity":"REDUCED_POWER"})";
  EXPECT_EQ(resp->body(), R"({"alarms":[)" + pll + "," + stalled + "," + pll + "]}");
}

TEST_F(GetAllAlarmsTest, DefaultsAreLeftOut) {
  host.answer(CCRUD::Command, "/resource/list", listOf({"/alarms/l"}));
  host.answer("/alarms/l", listOf({"/alarms/x"}));
  host.answer("/alarms/x", Resource());
  EXPECT_EQ(get()->body(), R"({"alarms":[{"device":{}}]})");
}

TEST_F(GetAllAlarmsTest, NoListsIsAnEmptyObject) {
  host.answer(CCRUD::Command, "/resource/list", listOf({}));
  const web::HttpResponsePtr resp = get();
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->body(), "{}");
  EXPECT_EQ(host.onlyAction().path, "/resource/list");
}

TEST_F(GetAllAlarmsTest, AListedAlarmThatVanishedFailsTheWholeCall) {
  twoLists();
  host.fail("/alarms/fan/2/stalled", [] {
    throw tavelabi::NonExistentResourcePathException("No resource at /alarms/fan/2/stalled");
  });
  EXPECT_THROW(get(), tavelabi::NonExistentResourcePathException);
}

TEST_F(GetAllAlarmsTest, AListWithoutValueFailsWithOutOfRange) {
  host.answer(CCRUD::Command, "/resource/list", listOf({"/alarms/l"}));
  host.answer("/alarms/l", Resource());
  EXPECT_THROW(get(), std::out_of_range);
}

TEST_F(GetAllAlarmsTest, ARefusedListCommandPassesThrough) {
  host.fail("/resource/list", [] {
    throw tavelabi::AuthorizationFailure("User kelo may not Command /resource/list");
  });
  EXPECT_THROW(get(), tavelabi::AuthorizationFailure);
}

}  // namespace
}  // namespace halvor::kelo
