#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kelo/handlers/http/snmp/DeleteSnmpTrapSettings.h"
#include "kelo/handlers/http/snmp/GetAllSnmpTrapSettingsHandler.h"
#include "kelo/handlers/http/snmp/GetSnmpSettingsHandler.h"
#include "kelo/handlers/http/snmp/PostSnmpTrapSettings.h"
#include "kelo/handlers/http/snmp/PutSnmpTrapSettings.h"
#include "kelo/handlers/http/snmp/SnmpSettingsHelperClass.h"
#include "kelo/Exceptions.h"
#include "support/HandlerTest.h"
#include "tavelabi/Exceptions.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;
using Texts = std::vector<std::string>;

Resource followed(const ResourceValue& value, const ResourceValue& setValue) {
  Resource resource(value);
  resource.values["set_value"] = setValue;
  return resource;
}

Resource receiver(const std::string& guid) {
  Resource resource;
  resource.values["guid"] = ResourceValue(guid);
  resource.values["trapReceiver"] = ResourceValue("10.0.0.5");
  resource.values["trapReceiverPort"] = ResourceValue(162);
  resource.values["trapCommunityString"] = ResourceValue("public");
  resource.values["trapType"] = ResourceValue("INFORM_V2C");
  resource.values["repeat"] = ResourceValue(3);
  resource.values["timeout"] = ResourceValue(5);
  return resource;
}

// The agent as the host holds it, every value confirmed.
void answerAgent(test::RecordingHost& host) {
  Resource port = followed(ResourceValue(161), ResourceValue(161));
  port.values["minValue"] = ResourceValue(1);
  port.values["maxValue"] = ResourceValue(65535);
  host.answer(CCRUD::Read, "/snmp/agentPort", port);
  host.answer(CCRUD::Read, "/snmp/readCommunity",
              followed(ResourceValue(Texts{"public", "monitor"}),
                       ResourceValue(Texts{"public", "monitor"})));
  host.answer(CCRUD::Read, "/snmp/writeCommunity",
              followed(ResourceValue(Texts{"private"}), ResourceValue(Texts{"private"})));
  host.answer(CCRUD::Read, "/snmp/trapsEnabled",
              followed(ResourceValue(true), ResourceValue(true)));
  host.answer(CCRUD::Read, "/snmp/trapSettings",
              followed(ResourceValue(Texts{"t1"}), ResourceValue(Texts{"t1"})));
  host.answer(CCRUD::Read, "/snmp/trapSettings/t1", receiver("t1"));
  host.answer(CCRUD::Read, "/snmp/trapSettings/validations",
              Resource("trapReceiverPort",
                       ResourceValue(ResourceValue::Map{{"minValue", 100}, {"maxValue", 200}})));
}

class SnmpSettingsHelperClassTest : public test::HandlerTest<GetSnmpSettingsHandler> {
 protected:
  web::HttpRequestPtr req = test::makeRequest(web::Put, "/1/api/snmp_settings", "", "");
};

TEST_F(SnmpSettingsHelperClassTest, GetShowsNoCommunityInTheSingleValuedFields) {
  answerAgent(host);
  const web::HttpResponsePtr resp = call(host, web::Get, "/1/api/snmp_settings", "", "", "s1");
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->body(),
            R"({"agentPort":161,"readCommunities":["public","monitor"],)"
            R"("writeCommunities":["private"],)"
            R"("trapSettings":[{"guid":"t1","trapReceiver":"10.0.0.5","trapReceiverPort":162,)"
            R"("trapCommunityString":"public","trapType":"INFORM_V2C","repeat":3,"timeout":5}],)"
            R"("validations":{"agentPort":{"minValue":1,"maxValue":65535,"required":true},)"
            R"("trapReceiverPort":{"minValue":100,"maxValue":200,"required":true}},)"
            R"("readCommunityValue":"","writeCommunityValue":"","trapsEnabled":true,)"
            R"("snmpVersion":2})");
}

TEST_F(SnmpSettingsHelperClassTest, UpdateResourceAddsSetValueWhenTheResourceLacksIt) {
  host.answer(CCRUD::Read, "/snmp/trapsEnabled", Resource(ResourceValue(true)));
  host.answer(CCRUD::Update, "/snmp/trapsEnabled", Resource());
  SnmpSettingsHelperClass::updateResource<bool>(req, &host, &info, "s1", "/snmp/trapsEnabled",
                                                false);
  const auto update = host.actionsOn("/snmp/trapsEnabled").at(1);
  EXPECT_EQ(update.action, CCRUD::Update);
  EXPECT_FALSE(update.resource.values.at("set_value").getBoolValue());
  EXPECT_TRUE(update.resource.values.at("value").getBoolValue());
}

TEST_F(SnmpSettingsHelperClassTest, UpdateResourceGoesOnAfterAFailedRead) {
  host.fail("/snmp/agentPort", [] { throw tavelabi::NonExistentResourcePathException("none"); });
  host.answer(CCRUD::Update, "/snmp/agentPort", Resource());
  SnmpSettingsHelperClass::updateResource<int>(req, &host, &info, "s1", "/snmp/agentPort", 1161);
  // The read failed and was only logged: the update was still sent, with the one key.
  const auto actions = host.actionsOn("/snmp/agentPort");
  ASSERT_EQ(actions.size(), 2u);
  EXPECT_EQ(actions[1].action, CCRUD::Update);
  ASSERT_EQ(actions[1].resource.values.size(), 1u);
  EXPECT_EQ(actions[1].resource.values.at("set_value").getIntValue(), 1161);
}

TEST_F(SnmpSettingsHelperClassTest, SetWritesTheFiveResourcesInOrder) {
  answerAgent(host);
  for (const auto* path : {"/snmp/agentPort", "/snmp/readCommunity", "/snmp/writeCommunity",
                           "/snmp/trapsEnabled", "/snmp/trapSettings"}) {
    host.answer(CCRUD::Update, path, Resource());
  }
  protobuf::SNMPSettings settings;
  settings.mutable_agentport()->set_value(1161);
  settings.add_readcommunities()->set_value("r1");
  settings.add_readcommunities()->set_value("r2");
  settings.add_trapsettings()->mutable_guid()->set_value("t2");
  SnmpSettingsHelperClass::setSnmpSettings(req, &host, &info, "s1", &settings);
  std::vector<std::string> updated;
  for (const auto& action : host.actions()) {
    if (action.action == CCRUD::Update) updated.push_back(action.path);
  }
  EXPECT_EQ(updated, (Texts{"/snmp/agentPort", "/snmp/readCommunity", "/snmp/writeCommunity",
                            "/snmp/trapsEnabled", "/snmp/trapSettings"}));
  const auto read = host.actionsOn("/snmp/readCommunity").at(1).resource.values.at("set_value");
  ASSERT_EQ(read.getListValue().size(), 2u);
  EXPECT_EQ(read.getListValue()[1].getStringValue(), "r2");
  EXPECT_EQ(host.actionsOn("/snmp/writeCommunity")
                .at(1)
                .resource.values.at("set_value")
                .getListValue()
                .size(),
            0u);
  EXPECT_FALSE(
      host.actionsOn("/snmp/trapsEnabled").at(1).resource.values.at("set_value").getBoolValue());
  EXPECT_EQ(host.actionsOn("/snmp/trapSettings")
                .at(1)
                .resource.values.at("set_value")
                .getListValue()[0]
                .getStringValue(),
            "t2");
}

TEST_F(SnmpSettingsHelperClassTest, APassOfUnchangedSettingsIsDoneAtOnce) {
  answerAgent(host);
  std::vector<bool> done;
  EXPECT_TRUE(SnmpSettingsHelperClass::confirmPass(req, &host, &info, "s1", done));
  EXPECT_EQ(host.actions().size(), 5u);
}

TEST_F(SnmpSettingsHelperClassTest, APassRereadsOnlyWhatIsNotYetConfirmed) {
  answerAgent(host);
  host.answer(CCRUD::Read, "/snmp/readCommunity",
              followed(ResourceValue(Texts{"public"}), ResourceValue(Texts{"public", "x"})));
  host.answer(CCRUD::Read, "/snmp/trapSettings",
              followed(ResourceValue(Texts{"t2", "t1"}), ResourceValue(Texts{"t1", "t2"})));
  std::vector<bool> done;
  EXPECT_FALSE(SnmpSettingsHelperClass::confirmPass(req, &host, &info, "s1", done));
  host.clearActions();
  host.answer(CCRUD::Read, "/snmp/readCommunity",
              followed(ResourceValue(Texts{"public", "x"}), ResourceValue(Texts{"public", "x"})));
  EXPECT_FALSE(SnmpSettingsHelperClass::confirmPass(req, &host, &info, "s1", done));
  ASSERT_EQ(host.actions().size(), 2u);
  EXPECT_EQ(host.actions()[0].path, "/snmp/readCommunity");
  EXPECT_EQ(host.actions()[1].path, "/snmp/trapSettings");
  host.clearActions();
  host.answer(CCRUD::Read, "/snmp/trapSettings",
              followed(ResourceValue(Texts{"t1", "t2"}), ResourceValue(Texts{"t1", "t2"})));
  EXPECT_TRUE(SnmpSettingsHelperClass::confirmPass(req, &host, &info, "s1", done));
  ASSERT_EQ(host.actions().size(), 1u);
  EXPECT_EQ(host.actions()[0].path, "/snmp/trapSettings");
}

TEST_F(SnmpSettingsHelperClassTest, AReceiverGoesToTheHostWithItsTypeByName) {
  protobuf::SNMPTrapSettings trap;
  trap.mutable_trapreceiver()->set_value("10.1.1.1");
  trap.set_traptype(protobuf::SnmpEnums::TRAP_V1);
  const Resource resource = SnmpSettingsHelperClass::getTrapSettingResourceFromProtobuf(trap);
  EXPECT_EQ(resource.values.size(), 2u);
  EXPECT_EQ(resource.values.at("trapReceiver").getStringValue(), "10.1.1.1");
  EXPECT_EQ(resource.values.at("trapType").getStringValue(), "TRAP_V1");
  const protobuf::SNMPTrapSettings back =
      SnmpSettingsHelperClass::getTrapSettingFromResource(receiver("t9"));
  EXPECT_EQ(back.traptype(), protobuf::SnmpEnums::INFORM_V2C);
  EXPECT_EQ(back.trapreceiverport().value(), 162);
}

class PostSnmpTrapSettingsTest : public test::HandlerTest<PostSnmpTrapSettings> {};

TEST_F(PostSnmpTrapSettingsTest, PortLimitsAreTheHostsAndTheAnswerIsTheAddedReceiver) {
  host.answer(CCRUD::Command, "/snmp/command/newTrapSetting", Resource());
  Resource list(ResourceValue(Texts{"t1", "t7"}));
  list.values["previouslyAdded"] = ResourceValue("t7");
  host.answer(CCRUD::Read, "/snmp/trapSettings/list", list);
  host.answer(CCRUD::Read, "/snmp/trapSettings/t7", receiver("t7"));
  const web::HttpResponsePtr resp =
      call(host, web::Post, "/1/api/snmp_trap_settings", "",
           R"({"trapReceiver":"10.0.0.5","trapReceiverPort":99999,"trapType":"TRAP_V2C"})", "s1");
  const auto command = host.actionsOn("/snmp/command/newTrapSetting").at(0);
  EXPECT_EQ(command.resource.values.at("trapReceiverPort").getIntValue(), 99999);
  EXPECT_EQ(command.resource.values.at("trapType").getStringValue(), "TRAP_V2C");
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_NE(resp->body().find(R"("guid":"t7")"), std::string::npos) << resp->body();
}

TEST_F(PostSnmpTrapSettingsTest, AnEmptyBodyIsMissingFormData) {
  EXPECT_THROW(call(host, web::Post, "/1/api/snmp_trap_settings", "", "", "s1"),
               RequestMissingFormData);
  EXPECT_TRUE(host.actions().empty());
}

class PutSnmpTrapSettingsTest : public test::HandlerTest<PutSnmpTrapSettings> {};

TEST_F(PutSnmpTrapSettingsTest, TheUrlsGuidWinsOverTheBodys) {
  host.answer(CCRUD::Update, "/snmp/trapSettings/t1", receiver("t1"));
  const web::HttpResponsePtr resp =
      callMember(&PutSnmpTrapSettings::putSnmpTrapSettings,
                 test::makeRequest(web::Put, "/1/api/snmp_trap_settings/t1", "",
                                   R"({"guid":"other","trapReceiver":"10.0.0.6"})"),
                 "s1", "t1");
  const auto update = host.onlyAction();
  EXPECT_EQ(update.path, "/snmp/trapSettings/t1");
  EXPECT_EQ(update.resource.values.at("guid").getStringValue(), "t1");
  EXPECT_EQ(update.resource.values.at("trapReceiver").getStringValue(), "10.0.0.6");
  EXPECT_EQ(resp->statusCode(), web::k200OK);
}

class DeleteSnmpTrapSettingsTest : public test::HandlerTest<DeleteSnmpTrapSettings> {};

TEST_F(DeleteSnmpTrapSettingsTest, SendsTheDeleteCommandAndAnswers200WithoutBody) {
  host.answer(CCRUD::Command, "/snmp/command/deleteTrapSetting", Resource());
  const web::HttpResponsePtr resp = callMember(
      &DeleteSnmpTrapSettings::deleteSnmpTrapSettings,
      test::makeRequest(web::Delete, "/1/api/snmp_trap_settings/t3", "", ""), "s1", "t3");
  EXPECT_EQ(host.onlyAction().resource.values.at("guid").getStringValue(), "t3");
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_TRUE(resp->body().empty());
}

class GetAllSnmpTrapSettingsHandlerTest : public test::HandlerTest<GetAllSnmpTrapSettingsHandler> {
};

TEST_F(GetAllSnmpTrapSettingsHandlerTest, ReadsEveryListedReceiverInOrder) {
  host.answer(CCRUD::Read, "/snmp/trapSettings/list", Resource(ResourceValue(Texts{"b", "a"})));
  host.answer(CCRUD::Read, "/snmp/trapSettings/b", receiver("b"));
  host.answer(CCRUD::Read, "/snmp/trapSettings/a", receiver("a"));
  const web::HttpResponsePtr resp =
      call(host, web::Get, "/1/api/snmp_trap_settings_list", "", "", "s1");
  const auto first = resp->body().find(R"("guid":"b")");
  const auto second = resp->body().find(R"("guid":"a")");
  ASSERT_NE(first, std::string::npos);
  ASSERT_NE(second, std::string::npos);
  EXPECT_LT(first, second);
}

}  // namespace
}  // namespace halvor::kelo
