#include <gtest/gtest.h>

#include <string>

#include "kelo/handlers/http/versions/PutSkyRunRemoteSupportHandler.h"
#include "support/DeferredHandlerTest.h"
#include "support/HandlerTest.h"
#include "tavelabi/Exceptions.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;

class PutSkyRunRemoteSupportHandlerTest : public test::HandlerTest<PutSkyRunRemoteSupportHandler> {
 protected:
  PutSkyRunRemoteSupportHandlerTest() { test::startedBackgroundQueue(); }

  web::HttpResponsePtr put(const std::string& body) {
    web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
    handler.putSkyRunRemoteSupport(
        test::makeRequest(web::Put, "/1/api/qcore/skyRunRemoteSupport", "", body), resp, &host,
        &info, "s1", answers.callback());
    return answers.waitFor();
  }

  test::Answers answers;
};

TEST_F(PutSkyRunRemoteSupportHandlerTest, SendsTheSetKeysFromTheQueueAndAnswers200) {
  host.answer(CCRUD::Command, "/command/qcore/controlSkyRunRemoteSupport", Resource());
  const web::HttpResponsePtr resp = put(R"({"isEnabled":true,"port":2200,"url":"x.example"})");
  const Resource& sent = host.onlyAction().resource;
  EXPECT_EQ(sent.values.size(), 3u);
  EXPECT_TRUE(sent.values.at("isEnabled").getBoolValue());
  EXPECT_EQ(sent.values.at("port").getIntValue(), 2200);
  EXPECT_EQ(resp->statusCode(), 200);
  EXPECT_TRUE(resp->body().empty());
  EXPECT_EQ(answers.count(), 1u);
}

TEST_F(PutSkyRunRemoteSupportHandlerTest, AnErrorMessageIs500WithItsText) {
  host.answer(CCRUD::Command, "/command/qcore/controlSkyRunRemoteSupport",
              Resource("errorMessage", ResourceValue("qCore unreachable")));
  const web::HttpResponsePtr resp = put("not json");
  EXPECT_TRUE(host.onlyAction().resource.values.empty());
  EXPECT_EQ(resp->statusCode(), 500);
  EXPECT_EQ(std::string(resp->body()), "qCore unreachable");
}

TEST_F(PutSkyRunRemoteSupportHandlerTest, AHostFailureIsMappedAsTheFrameMapsIt) {
  host.fail("/command/qcore/controlSkyRunRemoteSupport",
            [] { throw tavelabi::AuthorizationFailure("read-only"); });
  EXPECT_EQ(put("{}")->statusCode(), 403);
}

}  // namespace
}  // namespace halvor::kelo
