#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kelo/handlers/http/versions/GetVersionListHandler.h"
#include "support/HandlerTest.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;
using Texts = std::vector<std::string>;

class GetVersionListHandlerTest : public test::HandlerTest<GetVersionListHandler> {};

TEST_F(GetVersionListHandlerTest, ListsByGlobThenReadsEachNamedWithoutTheVersionsPart) {
  host.answer(CCRUD::Command, "/resource/list",
              Resource(ResourceValue(Texts{"/versions/b/x", "/versions/a/y/z"})));
  host.answer("/versions/b/x", Resource(ResourceValue("2.0")));
  host.answer("/versions/a/y/z", Resource(ResourceValue("1.0")));
  const web::HttpResponsePtr resp = call(host, web::Get, "/1/api/versions", "", "", "s1");
  const auto actions = host.actions();
  ASSERT_EQ(actions.size(), 3u);
  EXPECT_EQ(actions[0].resource.values.at("value").getStringValue(), "/versions/**/*");
  EXPECT_EQ(actions[0].sessionId, "s1");
  EXPECT_EQ(resp->statusCode(), 200);
  EXPECT_EQ(std::string(resp->body()),
            R"({"versions":[{"name":"/b/x","version":"2.0"},{"name":"/a/y/z","version":"1.0"}]})");
}

}  // namespace
}  // namespace halvor::kelo
