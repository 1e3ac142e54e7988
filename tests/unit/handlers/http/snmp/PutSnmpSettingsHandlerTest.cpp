#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "kelo/handlers/http/snmp/PutSnmpSettingsHandler.h"
#include "support/DeferredHandlerTest.h"
#include "support/HandlerTest.h"
#include "tavelabi/Exceptions.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;
using Texts = std::vector<std::string>;
using namespace std::chrono_literals;

Resource followed(const ResourceValue& value, const ResourceValue& setValue) {
  Resource resource(value);
  resource.values["set_value"] = setValue;
  return resource;
}

class PutSnmpSettingsHandlerTest : public test::HandlerTest<PutSnmpSettingsHandler> {
 protected:
  PutSnmpSettingsHandlerTest() {
    // One thread: each confirmation loop runs alone.
    test::startedBackgroundQueue(1);
    answerAll(ResourceValue(161), ResourceValue(161));
  }

  // Each path answers every verb alike, so that a failure set later hits reads and writes.
  void answerAll(const ResourceValue& port, const ResourceValue& portSet) {
    host.answer("/snmp/agentPort", followed(port, portSet));
    host.answer("/snmp/readCommunity",
                followed(ResourceValue(Texts{"public"}), ResourceValue(Texts{"public"})));
    host.answer("/snmp/writeCommunity", followed(ResourceValue(Texts{}), ResourceValue(Texts{})));
    host.answer("/snmp/trapsEnabled", followed(ResourceValue(true), ResourceValue(true)));
    host.answer("/snmp/trapSettings", followed(ResourceValue(Texts{}), ResourceValue(Texts{})));
  }

  // Calls the handler as its deferred frame does; returns once the handler returned.
  void put(const std::string& body) {
    web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
    handler.putSnmpSettings(test::makeRequest(web::Put, "/1/api/snmp_settings", "", body), resp,
                            &host, &info, "s1", answers.callback());
  }

  web::HttpResponsePtr waitForAnswer() { return answers.waitFor(); }

  bool answeredYet() { return answers.count() > 0; }

  std::chrono::steady_clock::time_point answeredAt() { return answers.timeOf(0); }

  test::Answers answers;
};

constexpr const char* kBody =
    R"({"agentPort":161,"readCommunities":["public"],"trapsEnabled":true})";

TEST_F(PutSnmpSettingsHandlerTest, AWriteThatChangesNothingIsAnsweredAfterOnePass) {
  const auto start = std::chrono::steady_clock::now();
  put(kBody);
  const web::HttpResponsePtr resp = waitForAnswer();
  ASSERT_NE(resp, nullptr);
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_TRUE(resp->body().empty());
  EXPECT_LT(answeredAt() - start, 900ms);
  // Five writes, then one read of each of the five.
  EXPECT_EQ(host.actions().size(), 15u);
}

TEST_F(PutSnmpSettingsHandlerTest, TheAnswerWaitsUntilTheHostConfirms) {
  answerAll(ResourceValue(161), ResourceValue(1161));
  put(R"({"agentPort":1161,"readCommunities":["public"],"trapsEnabled":true})");
  // The handler has returned; the loop waits on the background queue.
  std::this_thread::sleep_for(1500ms);
  EXPECT_FALSE(answeredYet());
  const auto confirmed = std::chrono::steady_clock::now();
  answerAll(ResourceValue(1161), ResourceValue(1161));
  const web::HttpResponsePtr resp = waitForAnswer();
  ASSERT_NE(resp, nullptr);
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_LT(answeredAt() - confirmed, 1500ms);
  const auto update = host.actionsOn("/snmp/agentPort").at(1);
  EXPECT_EQ(update.resource.values.at("set_value").getIntValue(), 1161);
}

TEST_F(PutSnmpSettingsHandlerTest, ASessionThatEndsWhileWaitingIs440) {
  answerAll(ResourceValue(161), ResourceValue(1161));
  put(kBody);
  std::this_thread::sleep_for(200ms);
  EXPECT_FALSE(answeredYet());
  host.fail("/snmp/agentPort", [] { throw tavelabi::NonExistentSessionException("expired"); });
  const web::HttpResponsePtr resp = waitForAnswer();
  ASSERT_NE(resp, nullptr);
  EXPECT_EQ(resp->statusCode(), 440);
  EXPECT_TRUE(resp->ifCloseConnection());
}

TEST_F(PutSnmpSettingsHandlerTest, AFailedPassIs500WithTheText) {
  // A resource that lost its "set_value" cannot be compared.
  host.answer("/snmp/trapsEnabled", Resource(ResourceValue(true)));
  put(kBody);
  const web::HttpResponsePtr resp = waitForAnswer();
  ASSERT_NE(resp, nullptr);
  EXPECT_EQ(resp->statusCode(), 500);
  EXPECT_NE(resp->body().find("map::at"), std::string::npos) << resp->body();
}

TEST_F(PutSnmpSettingsHandlerTest, ARefusedWriteFailsBeforeAnythingIsQueued) {
  host.fail("/snmp/agentPort", [] { throw tavelabi::AuthorizationFailure("read-only"); });
  EXPECT_THROW(put(kBody), tavelabi::AuthorizationFailure);
  EXPECT_FALSE(answeredYet());
}

TEST_F(PutSnmpSettingsHandlerTest, APortOfTheWrongTypeIsWrittenAsUnsetThatIsZero) {
  put(R"({"agentPort":"abc"})");
  ASSERT_NE(waitForAnswer(), nullptr);
  const auto writes = host.actionsOn("/snmp/agentPort");
  ASSERT_GE(writes.size(), 2u);
  EXPECT_EQ(writes[1].action, CCRUD::Update);
  EXPECT_EQ(writes[1].resource.values.at("set_value").getIntValue(), 0);
}

}  // namespace
}  // namespace halvor::kelo
