#include <gtest/gtest.h>

#include <string>

#include "OrbanTestSupport.h"
#include "kelo/Exceptions.h"
#include "kelo/handlers/http/orban/PutOrbanPreset.h"
#include "support/FakePluginInfo.h"
#include "support/Requests.h"

namespace halvor::kelo::test {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;

class PutOrbanPresetTest : public ::testing::Test {
 protected:
  web::HttpResponsePtr put(const std::string& body) {
    web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
    handler.putOrbanPreset(makeRequest(web::Put, "/1/api/orban/preset", "", body), resp, &host,
                           &info, "s1");
    return resp;
  }

  ScriptedReadsHost host;
  FakePluginInfo info;
  PutOrbanPreset handler;
};

TEST_F(PutOrbanPresetTest, ThePresetIsSavedAndAnsweredAtOnceWithoutAnyRead) {
  host.answer("/orban/preset/save", Resource());
  const web::HttpResponsePtr resp =
      put(R"({"name":"Night","isTwoband":true,"isLessMoreUnvailable":true})");
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->contentType(), web::CT_APPLICATION_JSON);
  EXPECT_TRUE(resp->body().empty());
  const auto& action = host.onlyAction();
  EXPECT_EQ(action.action, CCRUD::Command);
  EXPECT_EQ(action.path, "/orban/preset/save");
  const auto& saved = action.resource.values.at("value").getMapValue();
  ASSERT_EQ(saved.size(), 3u);
  EXPECT_EQ(saved.at("name").getStringValue(), "Night");
  EXPECT_TRUE(saved.at("isTwoband").getBoolValue());
  EXPECT_TRUE(saved.at("isLessMoreUnvailable").getBoolValue());
}

TEST_F(PutOrbanPresetTest, AFlagSentAsFalseIsSavedAsFalse) {
  host.answer("/orban/preset/save", Resource());
  put(R"({"name":"Night","isUser":false})");
  const auto& saved = host.onlyAction().resource.values.at("value").getMapValue();
  ASSERT_EQ(saved.count("isUser"), 1u);
  EXPECT_FALSE(saved.at("isUser").getBoolValue());
}

TEST_F(PutOrbanPresetTest, ABodyThatIsNotJsonIsInvalidJsonBeforeAnyHostCall) {
  EXPECT_THROW(put("[not json"), InvalidJson);
  EXPECT_THROW(put(""), RequestMissingFormData);
  EXPECT_TRUE(host.actions().empty());
}

TEST_F(PutOrbanPresetTest, TheHostsRefusalReachesTheFrame) {
  host.fail("/orban/preset/save",
            [] { throw std::invalid_argument("The factory preset Balanced cannot be changed"); });
  EXPECT_THROW(put(R"({"name":"Balanced"})"), std::invalid_argument);
}

}  // namespace
}  // namespace halvor::kelo::test
