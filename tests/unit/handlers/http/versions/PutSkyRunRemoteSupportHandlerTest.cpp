#include <gtest/gtest.h>

#include <string>

#include "DeferredCall.h"
#include "kelo/handlers/http/versions/PutSkyRunRemoteSupportHandler.h"
#include "support/HandlerTest.h"
#include "tavelabi/Exceptions.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;

class PutSkyRunRemoteSupportHandlerTest : public test::HandlerTest<PutSkyRunRemoteSupportHandler> {
 protected:
  PutSkyRunRemoteSupportHandlerTest() { test::startedQueue(); }

  web::HttpResponsePtr put(const std::string& body) {
    web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
    handler.putSkyRunRemoteSupport(
        test::makeRequest(web::Put, "/1/api/qcore/skyRunRemoteSupport", "", body), resp, &host,
        &info, "s1", answer.callback());
    return answer.wait();
  }

  test::DeferredAnswer answer;
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
  EXPECT_EQ(answer.calls(), 1);
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
