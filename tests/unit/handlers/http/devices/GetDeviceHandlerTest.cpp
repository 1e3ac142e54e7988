#include <gtest/gtest.h>

#include <string>

#include "kelo/handlers/http/devices/GetDeviceHandler.h"
#include "support/HandlerTest.h"

namespace halvor::kelo {
namespace {

using test::makeRequest;

class GetDeviceHandlerTest : public test::HandlerTest<GetDeviceHandler> {
 protected:
  web::HttpResponsePtr get(const std::string& guid, const std::string& sessionId = "s1") {
    return callMember(&GetDeviceHandler::getDevice,
                      makeRequest(web::Get, "/1/api/devices/" + guid, ""), sessionId, guid);
  }
};

TEST_F(GetDeviceHandlerTest, NameIsWhatStandsBeforeTheDashWithoutAskingTheHost) {
  const web::HttpResponsePtr resp = get("exciter-2");
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->contentType(), web::CT_APPLICATION_JSON);
  EXPECT_EQ(resp->body(), R"({"guid":"exciter-2","name":"exciter"})");
  EXPECT_TRUE(host.actions().empty());
}

TEST_F(GetDeviceHandlerTest, TheFirstDashDividesNameFromId) {
  EXPECT_EQ(get("a-b-c")->body(), R"({"guid":"a-b-c","name":"a"})");
}

TEST_F(GetDeviceHandlerTest, WithoutADashTheNameIsTheWholeText) {
  EXPECT_EQ(get("plain")->body(), R"({"guid":"plain","name":"plain"})");
}

TEST_F(GetDeviceHandlerTest, ADeviceTheHostDoesNotKnowIsAnsweredAllTheSame) {
  const web::HttpResponsePtr resp = get("toaster-99");
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->body(), R"({"guid":"toaster-99","name":"toaster"})");
  EXPECT_TRUE(host.actions().empty());
}

TEST_F(GetDeviceHandlerTest, EdgesOfTheDashGiveEmptyParts) {
  EXPECT_EQ(get("-3")->body(), R"({"guid":"-3","name":""})");
  EXPECT_EQ(get("fan-")->body(), R"({"guid":"fan-","name":"fan"})");
}

TEST_F(GetDeviceHandlerTest, NeedsNoSession) {
  EXPECT_EQ(get("fan-4", "")->body(), R"({"guid":"fan-4","name":"fan"})");
  EXPECT_TRUE(host.actions().empty());
}

TEST_F(GetDeviceHandlerTest, TextThatIsSpecialToPatternsIsTakenAsItStands) {
  EXPECT_EQ(get("a$1(b-[c")->body(), R"({"guid":"a$1(b-[c","name":"a$1(b"})");
}

}  // namespace
}  // namespace halvor::kelo
