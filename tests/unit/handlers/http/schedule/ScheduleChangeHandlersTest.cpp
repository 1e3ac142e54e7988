#include <gtest/gtest.h>

#include <stdexcept>

#include "ScheduleTestData.h"
#include "kelo/common/JsonOptions.h"
#include "kelo/handlers/http/schedule/DeleteScheduleHandler.h"
#include "kelo/handlers/http/schedule/PostScheduleHandler.h"
#include "kelo/handlers/http/schedule/PutScheduleHandler.h"
#include "kelo/handlers/http/schedule/ScheduleHelperClass.h"
#include "support/DeferredHandlerTest.h"
#include "tavelabi/Exceptions.h"

namespace halvor::kelo::test {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceAction;
using tavelabi::ResourceValue;

Resource status(bool answered, int code) {
  Resource resource{ResourceValue(answered)};
  resource.values["status"] = ResourceValue(code);
  return resource;
}

// What adding, changing and deleting a rule share, on the three handlers.
template <class Handler>
class ScheduleChangeTest : public DeferredHandlerTest<Handler> {
 protected:
  ScheduleChangeTest() {
    this->host.script("/scheduler/rules", {hostRules({{"1", hostRule(1, {"monday"})}})});
    this->host.script("/scheduler/hardwareResponseStatus",
                      {status(false, 0), status(true, 0), status(false, 0)});
    for (const char* command : {"/command/scheduler/addRule", "/command/scheduler/editRule",
                                "/command/scheduler/deleteRule"}) {
      this->host.script(command, {Resource("accepted", true)});
    }
  }
};

class PostScheduleHandlerTest : public ScheduleChangeTest<PostScheduleHandler> {
 protected:
  void post(const std::string& body) {
    callDeferred(&PostScheduleHandler::postSchedule,
                 makeRequest(web::Post, "/1/api/schedules", "", body));
  }
};
class PutScheduleHandlerTest : public ScheduleChangeTest<PutScheduleHandler> {
 protected:
  void put(const std::string& ruleId, const std::string& body) {
    callDeferred(&PutScheduleHandler::putScheduleRule,
                 makeRequest(web::Put, "/1/api/schedules/" + ruleId, "", body), ruleId);
  }
};
class DeleteScheduleHandlerTest : public ScheduleChangeTest<DeleteScheduleHandler> {
 protected:
  void remove(const std::string& ruleId) {
    callDeferred(&DeleteScheduleHandler::deleteScheduleRule,
                 makeRequest(web::Delete, "/1/api/schedules/" + ruleId, ""), ruleId);
  }
};

TEST_F(PostScheduleHandlerTest, TheRuleIsAddedAndTheWholeScheduleAnsweredOnceConfirmed) {
  post(R"({"startTime":"12:00:00","wednesday":true,"broadcastPreset":{"guid":"5x"}})");
  const web::HttpResponsePtr resp = answers.waitFor();
  ASSERT_NE(resp, nullptr);
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  protobuf::PresetScheduleList list;
  ASSERT_TRUE(JsonOptions::fromJson(resp->body(), list).ok());
  EXPECT_EQ(list.schedules_size(), 1);
  const Resource command = host.callsOn("/command/scheduler/addRule").at(0).action.resource;
  const auto& rule = command.values.at("value").getMapValue();
  EXPECT_EQ(rule.at("presetId").getIntValue(), 5);
  EXPECT_EQ(rule.at("dayOfWeek").getListValue().at(0).getStringValue(), "wednesday");
  EXPECT_EQ(rule.count("ruleId"), 0u);
  // Read until answered, then cleared.
  const auto flags = host.callsOn("/scheduler/hardwareResponseStatus");
  ASSERT_EQ(flags.size(), 3u);
  EXPECT_EQ(flags[2].action.action, CCRUD::Update);
}

TEST_F(PostScheduleHandlerTest, ABodyWithoutDaysSendsAnEmptyDayList) {
  post(R"({"broadcastPreset":{"guid":"2"}})");
  ASSERT_NE(answers.waitFor(), nullptr);
  const Resource command = host.callsOn("/command/scheduler/addRule").at(0).action.resource;
  EXPECT_TRUE(command.values.at("value").getMapValue().at("dayOfWeek").getListValue().empty());
}

TEST_F(PostScheduleHandlerTest, APresetGuidThatIsNoNumberFailsBeforeTheHost) {
  EXPECT_THROW(post(R"({"broadcastPreset":{"guid":"jazz"}})"), std::invalid_argument);
  EXPECT_TRUE(host.calls().empty());
  EXPECT_EQ(answers.count(), 0u);
}

TEST_F(PostScheduleHandlerTest, AHardwareErrorIs500WithoutBodyAndTheFlagIsCleared) {
  host.script("/scheduler/hardwareResponseStatus", {status(true, 3), status(false, 0)});
  post(R"({"broadcastPreset":{"guid":"2"}})");
  const web::HttpResponsePtr resp = answers.waitFor();
  ASSERT_NE(resp, nullptr);
  EXPECT_EQ(resp->statusCode(), web::k500InternalServerError);
  EXPECT_TRUE(resp->body().empty());
  const auto flags = host.callsOn("/scheduler/hardwareResponseStatus");
  ASSERT_EQ(flags.size(), 2u);
  EXPECT_EQ(flags[1].action.action, CCRUD::Update);
  EXPECT_FALSE(flags[1].action.resource.values.at("value").getBoolValue());
}

TEST_F(PostScheduleHandlerTest, ASessionThatEndsWhileWaitingIs440) {
  host.scriptSteps("/scheduler/hardwareResponseStatus", {[](const ResourceAction&) -> Resource {
                     throw tavelabi::NonExistentSessionException("expired");
                   }});
  post(R"({"broadcastPreset":{"guid":"2"}})");
  ASSERT_NE(answers.waitFor(), nullptr);
  EXPECT_EQ(answers.waitFor()->statusCode(), 440);
}

TEST_F(PutScheduleHandlerTest, TheChangedRuleCarriesItsNumber) {
  put("7", R"({"broadcastPreset":{"guid":"2"}})");
  ASSERT_NE(answers.waitFor(), nullptr);
  const Resource command = host.callsOn("/command/scheduler/editRule").at(0).action.resource;
  EXPECT_EQ(command.values.at("value").getMapValue().at("ruleId").getIntValue(), 7);
  EXPECT_EQ(answers.waitFor()->statusCode(), web::k200OK);
}

TEST_F(PutScheduleHandlerTest, ARuleIdThatIsNoNumberFailsBeforeTheHost) {
  EXPECT_THROW(put("seven", R"({"broadcastPreset":{"guid":"2"}})"), std::invalid_argument);
  EXPECT_TRUE(host.calls().empty());
}

TEST_F(DeleteScheduleHandlerTest, TheRuleNumberIsSentAndTheScheduleAnswered) {
  remove("1");
  ASSERT_NE(answers.waitFor(), nullptr);
  EXPECT_EQ(answers.waitFor()->statusCode(), web::k200OK);
  const Resource command = host.callsOn("/command/scheduler/deleteRule").at(0).action.resource;
  EXPECT_EQ(command.values.at("value").getIntValue(), 1);
}

TEST_F(DeleteScheduleHandlerTest, ARuleIdThatIsNoNumberFailsBeforeAnyHostCommand) {
  try {
    remove("first");
    ADD_FAILURE();
  } catch (const std::invalid_argument& error) {
    EXPECT_STREQ(error.what(), "stoi");
  }
  EXPECT_THROW(remove("99999999999"), std::out_of_range);
  EXPECT_TRUE(host.calls().empty());
  EXPECT_EQ(answers.count(), 0u);
}

}  // namespace
}  // namespace halvor::kelo::test
