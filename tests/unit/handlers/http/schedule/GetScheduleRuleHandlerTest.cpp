#include <gtest/gtest.h>

#include "ScheduleTestData.h"
#include "kelo/handlers/http/schedule/GetScheduleRuleHandler.h"
#include "kelo/handlers/http/schedule/ScheduleHelperClass.h"
#include "support/HandlerTest.h"

namespace halvor::kelo::test {
namespace {

class GetScheduleRuleHandlerTest : public HandlerTest<GetScheduleRuleHandler> {
 protected:
  GetScheduleRuleHandlerTest() { ScheduleHelperClass::setPresetList({}); }
  ~GetScheduleRuleHandlerTest() override { ScheduleHelperClass::setPresetList({}); }
};

TEST_F(GetScheduleRuleHandlerTest, OneRuleIsAnsweredWithoutReadingThePresetsAgain) {
  ScheduleHelperClass::setPresetList(presetEntries({{"3", "Night"}}));
  host.answer("/scheduler/rules", hostRules({{"4", hostRule(3, {"saturday"})}}));
  const web::HttpResponsePtr resp =
      callMember(&GetScheduleRuleHandler::getScheduleRule,
                 makeRequest(web::Get, "/1/api/schedules/4", ""), "s1", "4");
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  protobuf::PresetSchedule rule;
  ASSERT_TRUE(JsonOptions::fromJson(resp->body(), rule).ok());
  EXPECT_EQ(rule.guid().value(), "4");
  EXPECT_TRUE(rule.saturday().value());
  EXPECT_EQ(rule.broadcastpreset().resources().size(), 1u);
  EXPECT_EQ(host.actions().size(), 1u);
}

}  // namespace
}  // namespace halvor::kelo::test
