#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kelo/handlers/http/alarms/GetActiveAlarms.h"
#include "support/HandlerTest.h"
#include "tavelabi/Exceptions.h"
#include "unit/handlers/http/alarms/AlarmTestResources.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;
using test::fullAlarm;
using test::listOf;

class GetActiveAlarmsTest : public test::HandlerTest<GetActiveAlarms> {
 protected:
  web::HttpResponsePtr get(const std::string& sessionId = "client-1") {
    return call(host, web::Get, "/1/api/alarms/active", "", "", sessionId);
  }
};

TEST_F(GetActiveAlarmsTest, AnEmptyActiveListIs200WithAnEmptyArray) {
  host.answer("/system/alarms/active", listOf({}));
  const web::HttpResponsePtr resp = get();
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->contentType(), web::CT_APPLICATION_JSON);
  EXPECT_EQ(resp->body(), R"({"alarms":[]})");
}

TEST_F(GetActiveAlarmsTest, ReadsTheActiveListAndEachAlarmUnderTheClientsSession) {
  host.answer("/system/alarms/active", listOf({"/alarms/a"}));
  host.answer("/alarms/a", fullAlarm("/alarms/a", true));
  get("client-5");
  const std::vector<tavelabi::ResourceAction> actions = host.actions();
  ASSERT_EQ(actions.size(), 2u);
  EXPECT_EQ(actions[0].path, "/system/alarms/active");
  EXPECT_EQ(actions[1].path, "/alarms/a");
  for (const auto& action : actions) {
    EXPECT_EQ(action.action, CCRUD::Read);
    EXPECT_EQ(action.sessionId, "client-5");
    EXPECT_TRUE(action.resource.values.empty());
  }
}

// Protobuf's printer puts the members it prints at their default, and the message members, ahead
// of the wrappers that the message holds; the text is what clients get.
TEST_F(GetActiveAlarmsTest, MembersAtTheirDefaultArePrinted) {
  host.answer("/system/alarms/active", listOf({"/alarms/a", "/alarms/b"}));
  Resource critical = fullAlarm("/alarms/a", true, "exciter", "2");
  critical.values["severity"] = ResourceValue("CRITICAL");
  host.answer("/alarms/a", critical);
  host.answer("/alarms/b", Resource());
  EXPECT_EQ(get()->body(),
            R"({"alarms":[{"meters":[],"device":{"guid":"exciter-2","name":"exciter"},)"
            R"("severity":"CRITICAL","path":"/alarms/a","active":true,)"
            R"("description":"Heat sink above 80 C","name":"Over temperature",)"
            R"("time":"2026-01-31T12:34:56Z"},{"meters":[],"device":{},"severity":"CRITICAL"}]})");
}

TEST_F(GetActiveAlarmsTest, AnActiveListWithoutValueFailsWithMapAt) {
  host.answer("/system/alarms/active", Resource());
  EXPECT_THROW(get(), std::out_of_range);
}

TEST_F(GetActiveAlarmsTest, AnActiveAlarmThatVanishedFailsTheWholeCall) {
  host.answer("/system/alarms/active", listOf({"/alarms/gone"}));
  host.fail("/alarms/gone", [] {
    throw tavelabi::NonExistentResourcePathException("No resource at /alarms/gone");
  });
  EXPECT_THROW(get(), tavelabi::NonExistentResourcePathException);
}

}  // namespace
}  // namespace halvor::kelo
