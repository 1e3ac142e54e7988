#include <gtest/gtest.h>

#include <string>

#include "kelo/handlers/http/settings/PutSettingsHandler.h"
#include "support/HandlerTest.h"
#include "tavelabi/Exceptions.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;

class PutSettingsHandlerTest : public test::HandlerTest<PutSettingsHandler> {
 protected:
  web::HttpResponsePtr put(const std::string& guid, const std::string& body) {
    return callMember(&PutSettingsHandler::putSetting,
                      test::makeRequest(web::Put, "/1/api/settings/" + guid, "", body), "s1", guid);
  }
};

constexpr const char* kSetTo1200 =
    R"({"guid":"ignored","label":"Power","settingResource":{"resource":{"values":{)"
    R"("set_value":{"type":"INT32","intValue":1200},"value":{"type":"INT32","intValue":1}}}}})";

TEST_F(PutSettingsHandlerTest, AGuidOfTheFormABCWritesSetValueToPathABC) {
  Resource answer(ResourceValue(1000));
  answer.values["set_value"] = ResourceValue(1200);
  host.answer(CCRUD::Update, "/a/b/c", answer);
  const web::HttpResponsePtr resp = put("a-b-c", kSetTo1200);
  const tavelabi::ResourceAction& update = host.onlyAction();
  EXPECT_EQ(update.action, CCRUD::Update);
  EXPECT_EQ(update.path, "/a/b/c");
  EXPECT_EQ(update.sessionId, "s1");
  // Only "set_value" of the body goes to the host.
  ASSERT_EQ(update.resource.values.size(), 1u);
  EXPECT_EQ(update.resource.values.at("set_value").getIntValue(), 1200);
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->contentType(), web::CT_APPLICATION_JSON);
  EXPECT_EQ(resp->body(), R"({"values":{"set_value":{"intValue":1200,"type":"INT32"},)"
                          R"("value":{"intValue":1000,"type":"INT32"}}})");
}

TEST_F(PutSettingsHandlerTest, ABodyWithoutSetValueFailsBeforeAnyHostCall) {
  for (const std::string body :
       {R"({"settingResource":{"resource":{"values":{"value":{"type":"INT32","intValue":1}}}}})",
        "", "not json", "{}"}) {
    try {
      put("a-b", body);
      ADD_FAILURE() << "no exception for " << body;
    } catch (const std::out_of_range& error) {
      EXPECT_STREQ(error.what(), "CHECK failed: it != end(): key not found: set_value") << body;
    }
  }
  EXPECT_TRUE(host.actions().empty());
}

TEST_F(PutSettingsHandlerTest, AHostFailurePassesThrough) {
  host.fail("/nowhere", [] { throw tavelabi::NonExistentResourcePathException("No resource"); });
  EXPECT_THROW(put("nowhere", kSetTo1200), tavelabi::NonExistentResourcePathException);
}

}  // namespace
}  // namespace halvor::kelo
