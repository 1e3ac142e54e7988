#include <gtest/gtest.h>

#include <string>

#include "SequenceHost.h"
#include "kelo/handlers/http/remoteio/PutRemoteIORule.h"
#include "support/HandlerTest.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;

Resource hostRule(const std::string& guid, bool transitioning) {
  Resource rule;
  rule.values["label"] = ResourceValue("Closed");
  rule.values["polarityMask"] = ResourceValue(1);
  rule.values["value"] = ResourceValue("RF on");
  rule.values["guid"] = ResourceValue(guid);
  rule.values["set_value"] = ResourceValue(3);
  rule.values["level"] = ResourceValue(true);
  rule.values["transitioning"] = ResourceValue(transitioning);
  return rule;
}

class PutRemoteIORuleTest : public ::testing::Test {
 protected:
  web::HttpResponsePtr put(const std::string& body) {
    web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
    handler.putRemoteIORule(test::makeRequest(web::Put, "/1/api/remote-io/rules/x", "", body), resp,
                            &host, &info, "s1", "ignored");
    return resp;
  }

  test::SequenceHost host;
  test::FakePluginInfo info;
  PutRemoteIORule handler;
};

TEST_F(PutRemoteIORuleTest, SendsTheRuleAsTextAndAnswersTheSettledRule) {
  host.answer(CCRUD::Command, "/remoteio/update", Resource("guid", ResourceValue("input/3")));
  host.readsInTurn("/remoteio/input/3", {hostRule("input3", true), hostRule("input3", false)});
  const web::HttpResponsePtr resp =
      put(R"({"guid":"input3","action":{"value":"RF on","setValue":"3"},)"
          R"("trigger":{"label":"Closed","polarityMask":"1"},"level":true})");
  const auto commands = host.actionsOn("/remoteio/update");
  ASSERT_EQ(commands.size(), 1u);
  EXPECT_EQ(commands[0].action, CCRUD::Command);
  EXPECT_EQ(commands[0].resource.values.at("set_value").getStringValue(), "3");
  EXPECT_EQ(commands[0].resource.values.at("polarityMask").getStringValue(), "1");
  EXPECT_EQ(host.actionsOn("/remoteio/input/3").size(), 2u);
  EXPECT_EQ(resp->statusCode(), 200);
  EXPECT_EQ(
      std::string(resp->body()),
      R"({"guid":"input3","level":true,"action":{"value":"RF on","setValue":"3","triggers":{}},)"
      R"("trigger":{"polarityMask":"1","label":"Closed"},"type":"INPUT"})");
}

TEST_F(PutRemoteIORuleTest, AnAnswerGuidWithoutTheWordInputIsConvertedAsAnOutput) {
  host.answer(CCRUD::Command, "/remoteio/update", Resource("guid", ResourceValue("output/1")));
  host.readsInTurn("/remoteio/output/1", {hostRule("output1", false)});
  const web::HttpResponsePtr resp = put(R"({"guid":"input1"})");
  EXPECT_NE(std::string(resp->body()).find(R"("type":"OUTPUT")"), std::string::npos);
}

TEST_F(PutRemoteIORuleTest, ACommandAnswerWithoutGuidFailsWithMapAt) {
  host.answer(CCRUD::Command, "/remoteio/update", Resource());
  EXPECT_THROW(put("{}"), std::out_of_range);
}

}  // namespace
}  // namespace halvor::kelo
