#include <gtest/gtest.h>

#include <stdexcept>

#include "OrbanTestSupport.h"
#include "kelo/handlers/http/orban/GetOrbanActivePreset.h"
#include "support/FakePluginInfo.h"
#include "support/Requests.h"

namespace halvor::kelo::test {
namespace {

using tavelabi::Resource;
using tavelabi::ResourceValue;

class GetOrbanActivePresetTest : public ::testing::Test {
 protected:
  web::HttpResponsePtr call() {
    web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
    handler.getActiveOrban(makeRequest(web::Get, "/1/api/orban/active", ""), resp, &host, &info,
                           "s1");
    return resp;
  }

  ScriptedReadsHost host;
  FakePluginInfo info;
  GetOrbanActivePreset handler;
};

TEST_F(GetOrbanActivePresetTest, TheActivePresetIsReadAndAnsweredWithoutTheAskedForName) {
  Resource active = presetResource("Balanced", true);
  active.values["set_value"] = ResourceValue("Night");
  host.answer("/orban/activePreset/name", active);
  const web::HttpResponsePtr resp = call();
  EXPECT_EQ(host.onlyAction().path, "/orban/activePreset/name");
  EXPECT_EQ(host.onlyAction().action, tavelabi::CCRUD::Read);
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->contentType(), web::CT_APPLICATION_JSON);
  EXPECT_EQ(resp->body(),
            R"({"name":"Balanced","isFactory":true,"isLessMoreAvailable":true,)"
            R"("isLessMoreUnvailable":false,"isLowLatency":false,"isModifiable":true,)"
            R"("isMultiband":true,"isTwoband":false,"isUser":false})");
}

TEST_F(GetOrbanActivePresetTest, AnActivePresetWithoutAKeyIsMapAt) {
  Resource active = presetResource("Balanced", true);
  active.values.erase("isLessMoreUnvailable");
  host.answer("/orban/activePreset/name", active);
  EXPECT_THROW(call(), std::out_of_range);
}

}  // namespace
}  // namespace halvor::kelo::test
