#include <gtest/gtest.h>

#include <string>

#include "kelo/handlers/http/versions/GetSkyRunRemoteSupportHandler.h"
#include "support/DeferredHandlerTest.h"
#include "support/HandlerTest.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;

class GetSkyRunRemoteSupportHandlerTest : public test::HandlerTest<GetSkyRunRemoteSupportHandler> {
 protected:
  GetSkyRunRemoteSupportHandlerTest() { test::startedBackgroundQueue(); }

  web::HttpResponsePtr get() {
    web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
    handler.getSkyRunRemoteSupport(
        test::makeRequest(web::Get, "/1/api/qcore/skyRunRemoteSupport", ""), resp, &host, &info,
        "s1", answers.callback());
    return answers.waitFor();
  }

  test::Answers answers;
};

TEST_F(GetSkyRunRemoteSupportHandlerTest, AnswersTheFiveKeysAsJson) {
  Resource state("isEnabled", ResourceValue(true));
  state.values["port"] = ResourceValue(2222);
  state.values["connectionId"] = ResourceValue(4711);
  state.values["url"] = ResourceValue("support.example.net");
  state.values["timeout"] = ResourceValue(60);
  host.answer(CCRUD::Command, "/command/qcore/readSkyRunRemoteSupport", state);
  const web::HttpResponsePtr resp = get();
  EXPECT_TRUE(host.onlyAction().resource.values.empty());
  EXPECT_EQ(resp->statusCode(), 200);
  EXPECT_EQ(std::string(resp->body()),
            R"({"isEnabled":true,"port":2222,"connectionId":4711,"url":"support.example.net",)"
            R"("timeout":60})");
}

TEST_F(GetSkyRunRemoteSupportHandlerTest, AnErrorMessageIs500WithItsText) {
  host.answer(CCRUD::Command, "/command/qcore/readSkyRunRemoteSupport",
              Resource("errorMessage", ResourceValue("qCore unreachable")));
  const web::HttpResponsePtr resp = get();
  EXPECT_EQ(resp->statusCode(), 500);
  EXPECT_EQ(std::string(resp->body()), "qCore unreachable");
}

}  // namespace
}  // namespace halvor::kelo
