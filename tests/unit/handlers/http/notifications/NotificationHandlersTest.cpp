#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kelo/Exceptions.h"
#include "kelo/handlers/http/notifications/DeleteNotificationHandler.h"
#include "kelo/handlers/http/notifications/GetEmailServerSettingsHandler.h"
#include "kelo/handlers/http/notifications/GetNotificationHandler.h"
#include "kelo/handlers/http/notifications/GetNotificationListHandler.h"
#include "kelo/handlers/http/notifications/NotificationHelperClass.h"
#include "kelo/handlers/http/notifications/PostNotificationHandler.h"
#include "kelo/handlers/http/notifications/PutEmailServerSettingsHandler.h"
#include "kelo/handlers/http/notifications/PutNotificationHandler.h"
#include "support/HandlerTest.h"
#include "tavelabi/Exceptions.h"
#include "unit/handlers/http/alarms/AlarmTestResources.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;
using Map = ResourceValue::Map;

constexpr const char* kFan = "/alarms/fan/3/lowSpeed";
constexpr const char* kExciter = "/alarms/exciter/1/inputLost";

Resource notification(const std::string& guid, const std::string& title) {
  Resource resource;
  resource.values["guid"] = ResourceValue(guid);
  resource.values["title"] = ResourceValue(title);
  resource.values["alarms"] =
      ResourceValue(Map{{"a1", ResourceValue(Map{{"alarmPath", kFan}})},
                        {"a2", ResourceValue(Map{{"alarmPath", kExciter}})}});
  resource.values["users"] =
      ResourceValue(Map{{"u1", ResourceValue(Map{{"email", "one@example.com"}})},
                        {"u2", ResourceValue(Map{{"email", "two@example.com"}})}});
  return resource;
}

void answerAlarms(test::RecordingHost& host) {
  host.answer(CCRUD::Read, kFan, test::fullAlarm(kFan, true, "fan", "3"));
  host.answer(CCRUD::Read, kExciter, test::fullAlarm(kExciter, false, "exciter", "1"));
}

// The commands sent, as "command guid key=value" lines, in order.
std::vector<std::string> commands(const test::RecordingHost& host) {
  std::vector<std::string> lines;
  for (const auto& action : host.actions()) {
    if (action.action != CCRUD::Command) continue;
    std::string line = action.path;
    for (const auto& [key, value] : action.resource.values) {
      line += " " + key + "=" + value.getStringValue();
    }
    lines.push_back(line);
  }
  return lines;
}

template <class Handler>
class NotificationTest : public test::HandlerTest<Handler> {
 protected:
  NotificationTest() {
    answerAlarms(this->host);
    this->host.answer(CCRUD::Read, "/notification/n1", notification("n1", "Cooling"));
    for (const char* command :
         {"addUser", "removeUser", "addAlarm", "removeAlarm", "rename", "delete"}) {
      this->host.answer(CCRUD::Command, std::string("/notification/command/") + command,
                        Resource());
    }
  }
  web::HttpRequestPtr put(const std::string& body) {
    return test::makeRequest(web::Put, "/1/api/notifications/n1", "", body);
  }
};

using PutNotificationHandlerTest = NotificationTest<PutNotificationHandler>;
using PostNotificationHandlerTest = NotificationTest<PostNotificationHandler>;
using GetNotificationHandlerTest = NotificationTest<GetNotificationHandler>;
using GetNotificationListHandlerTest = NotificationTest<GetNotificationListHandler>;
using DeleteNotificationHandlerTest = NotificationTest<DeleteNotificationHandler>;

TEST(NotificationHelperClassTest, ThePathHoldsTheGuidAsItCame) {
  EXPECT_EQ(NotificationHelperClass::getNotificationPath("n-1"), "/notification/n-1");
  EXPECT_EQ(NotificationHelperClass::getNotificationPath("a$1"), "/notification/a$1");
}

TEST_F(GetNotificationHandlerTest, AlarmsAreReadLiveAndAddressesListedInKeyOrder) {
  const auto resp =
      callMember(&GetNotificationHandler::getNotification,
                 test::makeRequest(web::Get, "/1/api/notifications/n1", "", ""), "s1", "n1");
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  const std::string body(resp->body());
  EXPECT_EQ(body.find(R"({"guid":"n1","title":"Cooling","alarms":[)"), 0u) << body;
  EXPECT_LT(body.find(kFan), body.find(kExciter));
  EXPECT_NE(body.find(R"("users":["one@example.com","two@example.com"]})"), std::string::npos)
      << body;
  EXPECT_EQ(host.actionsOn(kFan).size(), 1u);
}

TEST_F(GetNotificationHandlerTest, AnAlarmNoLongerInTheTreeFailsTheRead) {
  Resource stale = notification("n3", "Stale");
  stale.values["alarms"] =
      ResourceValue(Map{{"a9", ResourceValue(Map{{"alarmPath", "/alarms/gone/1/x"}})}});
  host.answer(CCRUD::Read, "/notification/n3", stale);
  host.fail("/alarms/gone/1/x",
            [] { throw tavelabi::NonExistentResourcePathException("No resource"); });
  EXPECT_THROW(
      callMember(&GetNotificationHandler::getNotification,
                 test::makeRequest(web::Get, "/1/api/notifications/n3", "", ""), "s1", "n3"),
      tavelabi::NonExistentResourcePathException);
}

TEST_F(GetNotificationHandlerTest, AMissingKeyFailsWithMapAt) {
  Resource partial = notification("n2", "x");
  partial.values.erase("users");
  host.answer(CCRUD::Read, "/notification/n2", partial);
  try {
    callMember(&GetNotificationHandler::getNotification,
               test::makeRequest(web::Get, "/1/api/notifications/n2", "", ""), "s1", "n2");
    FAIL() << "no exception";
  } catch (const std::out_of_range& error) {
    EXPECT_STREQ(error.what(), "map::at");
  }
}

TEST_F(GetNotificationListHandlerTest, EveryKeyOfTheListIsOneNotification) {
  Resource list;
  list.values["n1"] = ResourceValue(true);
  list.values["n2"] = ResourceValue(true);
  host.answer(CCRUD::Read, "/notifications/list", list);
  host.answer(CCRUD::Read, "/notification/n2", notification("n2", "Power"));
  const auto resp = call(host, web::Get, "/1/api/notifications", "", "", "s1");
  const std::string body(resp->body());
  EXPECT_EQ(body.find(R"({"notifications":[{"guid":"n1")"), 0u) << body;
  EXPECT_NE(body.find(R"({"guid":"n2","title":"Power")"), std::string::npos) << body;
}

TEST_F(PutNotificationHandlerTest, TheSameTitleSendsNoRenameButEveryLinkIsReplaced) {
  const std::string body = std::string(R"({"title":"Cooling","users":["one@example.com"],)") +
                           R"("alarms":[{"path":")" + kFan + R"("}]})";
  const auto resp = callMember(&PutNotificationHandler::putNotification, put(body), "s1", "n1");
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(commands(host),
            (std::vector<std::string>{
                "/notification/command/removeUser guid=n1 notificationUserGuid=u1",
                "/notification/command/removeUser guid=n1 notificationUserGuid=u2",
                "/notification/command/addUser email=one@example.com guid=n1",
                "/notification/command/removeAlarm guid=n1 notificationAlarmGuid=a1",
                "/notification/command/removeAlarm guid=n1 notificationAlarmGuid=a2",
                std::string("/notification/command/addAlarm alarmPath=") + kFan + " guid=n1"}));
}

TEST_F(PutNotificationHandlerTest, ANewTitleIsRenamedFirst) {
  callMember(&PutNotificationHandler::putNotification, put(R"({"title":"Fans"})"), "s1", "n1");
  const auto sent = commands(host);
  ASSERT_FALSE(sent.empty());
  EXPECT_EQ(sent[0], "/notification/command/rename guid=n1 title=Fans");
}

TEST_F(PutNotificationHandlerTest, NoUsersAndNoAlarmsEmptiesBoth) {
  callMember(&PutNotificationHandler::putNotification, put(R"({"title":"Cooling"})"), "s1", "n1");
  const auto sent = commands(host);
  EXPECT_EQ(sent.size(), 4u);
  for (const std::string& line : sent) {
    EXPECT_NE(line.find("/remove"), std::string::npos) << line;
  }
}

TEST_F(PutNotificationHandlerTest, AnEmptyBodyIsMissingFormDataBeforeAnyHostCall) {
  EXPECT_THROW(callMember(&PutNotificationHandler::putNotification, put(""), "s1", "n1"),
               RequestMissingFormData);
  EXPECT_TRUE(host.actions().empty());
}

TEST_F(PostNotificationHandlerTest, ANotitleCreateIsEmptyThenAlarmsAndAddressesAreAdded) {
  host.answer(CCRUD::Command, "/notification/command/create",
              Resource("guid", ResourceValue("n1")));
  const std::string body = std::string(R"({"users":["a@example.com"],"alarms":[{"path":")") +
                           kExciter + R"(","name":"ignored"}]})";
  const auto resp = call(host, web::Post, "/1/api/notifications", "", body, "s1");
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  const auto create = host.actionsOn("/notification/command/create");
  ASSERT_EQ(create.size(), 1u);
  EXPECT_TRUE(create[0].resource.values.empty());
  EXPECT_EQ(commands(host),
            (std::vector<std::string>{
                "/notification/command/create",
                std::string("/notification/command/addAlarm alarmPath=") + kExciter + " guid=n1",
                "/notification/command/addUser email=a@example.com guid=n1"}));
}

TEST_F(DeleteNotificationHandlerTest, SendsDeleteAndAnswers200WithoutBody) {
  const auto resp =
      callMember(&DeleteNotificationHandler::deleteNotification,
                 test::makeRequest(web::Delete, "/1/api/notifications/n1", "", ""), "s1", "n1");
  EXPECT_EQ(commands(host), (std::vector<std::string>{"/notification/command/delete guid=n1"}));
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_TRUE(resp->body().empty());
}

class EmailServerSettingsTest : public test::HandlerTest<PutEmailServerSettingsHandler> {};

TEST_F(EmailServerSettingsTest, OnlyTheSetFieldsAreSentAndTheSettingsReadBack) {
  Resource server;
  server.values["host"] = ResourceValue("mail.example.com");
  server.values["port"] = ResourceValue(587);
  server.values["authentication"] = ResourceValue(false);
  host.answer(CCRUD::Read, "/settings/emailServer", server);
  host.answer(CCRUD::Command, "/settings/command/email", Resource("ignored", ResourceValue(1)));
  const auto resp = call(host, web::Put, "/1/api/email_server_settings", "",
                         R"({"port":465,"authentication":false})", "s1");
  const auto command = host.actionsOn("/settings/command/email").at(0);
  EXPECT_EQ(command.resource.values.size(), 2u);
  EXPECT_EQ(command.resource.values.at("port").getIntValue(), 465);
  EXPECT_FALSE(command.resource.values.at("authentication").getBoolValue());
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->body(), R"({"authentication":false,"port":587,"host":"mail.example.com"})");
}

class GetEmailServerSettingsHandlerTest : public test::HandlerTest<GetEmailServerSettingsHandler> {
};

TEST_F(GetEmailServerSettingsHandlerTest, AKeyOfTheWrongTypeIsA500Text) {
  host.answer(CCRUD::Read, "/settings/emailServer", Resource("port", ResourceValue("587")));
  EXPECT_THROW(call(host, web::Get, "/1/api/email_server_settings", "", "", "s1"),
               std::invalid_argument);
}

}  // namespace
}  // namespace halvor::kelo
