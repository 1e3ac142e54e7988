#include <gtest/gtest.h>

#include <string>

#include "kelo/Exceptions.h"
#include "kelo/handlers/http/versions/PutLodestarHandler.h"
#include "support/HandlerTest.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;

class PutLodestarHandlerTest : public test::HandlerTest<PutLodestarHandler> {};

TEST_F(PutLodestarHandlerTest, SendsOnlyTheSetKeysAndAnswersTheRegistrationReadAgain) {
  host.answer(CCRUD::Command, "/lodestar/service/update", Resource());
  Resource registration("lodestarEnabled", ResourceValue(true));
  registration.values["callSign"] = ResourceValue("KXYZ");
  registration.values["serviceState"] = ResourceValue("ENABLING");
  host.answer(CCRUD::Read, "/lodestar/service/query", registration);
  const web::HttpResponsePtr resp = call(host, web::Put, "/1/api/lodestar", "",
                                         R"({"lodestarEnabled":true,"callSign":"KXYZ"})", "s1");
  const Resource sent = host.actions()[0].resource;
  EXPECT_EQ(sent.values.size(), 2u);
  EXPECT_TRUE(sent.values.at("lodestarEnabled").getBoolValue());
  EXPECT_EQ(sent.values.at("callSign").getStringValue(), "KXYZ");
  EXPECT_EQ(resp->statusCode(), 200);
  // Keys the host has beyond the four are not part of the answer; absent ones stay absent.
  EXPECT_EQ(std::string(resp->body()), R"({"lodestarEnabled":true,"callSign":"KXYZ"})");
}

TEST_F(PutLodestarHandlerTest, AnEmptyBodyIsMissingFormDataBeforeAnyHostCall) {
  EXPECT_THROW(call(host, web::Put, "/1/api/lodestar", "", "", "s1"), RequestMissingFormData);
  EXPECT_THROW(call(host, web::Put, "/1/api/lodestar", "", "{nope", "s1"), InvalidJson);
  EXPECT_TRUE(host.actions().empty());
}

}  // namespace
}  // namespace halvor::kelo
