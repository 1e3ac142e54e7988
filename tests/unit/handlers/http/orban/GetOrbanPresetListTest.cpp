#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "OrbanTestSupport.h"
#include "kelo/handlers/http/orban/GetOrbanPresetList.h"
#include "support/FakePluginInfo.h"
#include "support/HandlerTest.h"
#include "support/Requests.h"
#include "tavelabi/Exceptions.h"

namespace halvor::kelo::test {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;

class GetOrbanPresetListTest : public ::testing::Test {
 protected:
  web::HttpResponsePtr call() {
    web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
    handler.processHttpRequest(makeRequest(web::Get, "/1/api/orban", ""), resp, &host, &info, "s1");
    return resp;
  }

  ScriptedReadsHost host;
  FakePluginInfo info;
  GetOrbanPresetList handler;
};

TEST_F(GetOrbanPresetListTest, EveryPresetIsAnsweredInTheOrderOfTheHostsList) {
  host.answer("/orban/presetList", presetList({"Night", "Balanced"}));
  host.answer("/orban/presetList/Night", presetResource("Night", false));
  host.answer("/orban/presetList/Balanced", presetResource("Balanced", true));
  const web::HttpResponsePtr resp = call();
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->contentType(), web::CT_APPLICATION_JSON);
  EXPECT_EQ(resp->body(),
            R"({"presets":[{"name":"Night","isFactory":false,"isLessMoreAvailable":false,)"
            R"("isLessMoreUnvailable":true,"isLowLatency":true,"isModifiable":false,)"
            R"("isMultiband":false,"isTwoband":true,"isUser":true},)"
            R"({"name":"Balanced","isFactory":true,"isLessMoreAvailable":true,)"
            R"("isLessMoreUnvailable":false,"isLowLatency":false,"isModifiable":true,)"
            R"("isMultiband":true,"isTwoband":false,"isUser":false}]})");
  const auto actions = host.actions();
  ASSERT_EQ(actions.size(), 3u);
  EXPECT_EQ(actions[0].path, "/orban/presetList");
  EXPECT_EQ(actions[1].path, "/orban/presetList/Night");
  EXPECT_EQ(actions[2].path, "/orban/presetList/Balanced");
  for (const auto& action : actions) EXPECT_EQ(action.action, CCRUD::Read);
}

TEST_F(GetOrbanPresetListTest, AnEmptyListIsAnEmptyObject) {
  host.answer("/orban/presetList", presetList({}));
  EXPECT_EQ(call()->body(), "{}");
}

TEST_F(GetOrbanPresetListTest, APresetWithoutIsUserEndsTheListWithMapAt) {
  host.answer("/orban/presetList", presetList({"Balanced", "Broken", "Night"}));
  host.answer("/orban/presetList/Balanced", presetResource("Balanced", true));
  Resource broken = presetResource("Broken", false);
  broken.values.erase("isUser");
  host.answer("/orban/presetList/Broken", broken);
  host.answer("/orban/presetList/Night", presetResource("Night", false));
  try {
    call();
    FAIL() << "a preset without isUser was listed";
  } catch (const std::out_of_range& error) {
    EXPECT_STREQ(error.what(), "map::at");
  }
  // The list ends at the broken preset: the one after it is not read.
  EXPECT_TRUE(host.actionsOn("/orban/presetList/Night").empty());
}

TEST_F(GetOrbanPresetListTest, ThroughTheFrameAMissingKeyIs500WithMapAt) {
  host.answer("/orban/presetList", presetList({"Broken"}));
  Resource broken = presetResource("Broken", false);
  broken.values.erase("isUser");
  host.answer("/orban/presetList/Broken", broken);
  installHost(&host, &info);
  const web::HttpResponsePtr resp =
      throughFrame(handler, makeRequest(web::Get, "/1/api/orban", ""));
  EXPECT_EQ(resp->statusCode(), 500);
  EXPECT_EQ(resp->contentType(), web::CT_TEXT_PLAIN);
  EXPECT_NE(resp->body().find("map::at"), std::string::npos) << resp->body();
}

TEST_F(GetOrbanPresetListTest, AListWithoutValueIsMapAt) {
  host.answer("/orban/presetList", Resource());
  EXPECT_THROW(call(), std::out_of_range);
}

TEST_F(GetOrbanPresetListTest, AFlagOfAnotherTypeIsAMismatchNamingTheKey) {
  host.answer("/orban/presetList", presetList({"Odd"}));
  Resource odd = presetResource("Odd", false);
  odd.values["isTwoband"] = tavelabi::ResourceValue("yes");
  host.answer("/orban/presetList/Odd", odd);
  try {
    call();
    FAIL() << "a text flag was accepted";
  } catch (const std::invalid_argument& error) {
    EXPECT_NE(std::string(error.what()).find("isTwoband"), std::string::npos) << error.what();
  }
}

TEST_F(GetOrbanPresetListTest, AnExpiredSessionThroughTheFrameIs440) {
  host.fail("/orban/presetList",
            [] { throw tavelabi::NonExistentSessionException("Session s1 does not exist"); });
  installHost(&host, &info);
  const web::HttpResponsePtr resp =
      throughFrame(handler, makeRequest(web::Get, "/1/api/orban", ""));
  EXPECT_EQ(resp->statusCode(), 440);
  EXPECT_TRUE(resp->ifCloseConnection());
}

}  // namespace
}  // namespace halvor::kelo::test
