#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "OpenApiOutline.h"

namespace halvor::kelo::test {
namespace {

using Operations = std::map<std::string, std::set<std::string>>;

// The error text of parsing `text`, or "" when it parsed.
std::string errorOf(const std::string& text) {
  try {
    OpenApiOutline::parse(text, "doc.yaml");
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "";
}

TEST(OpenApiOutlineTest, ReadsThePathsTheirMethodsAndTheWebSocketPaths) {
  const OpenApiOutline outline = OpenApiOutline::parse(R"(openapi: 3.0.3
info:
  title: x
paths:
  /1/api/resource:
    summary: One resource
    parameters:
      - $ref: '#/components/parameters/ResourcePath'
    get:
      responses:
        '200':
          description: ok
    put:
      responses: {}
  '/1/api/playlists/{guid}':
    delete:
      responses: {}
x-websockets:
  /1/ws/ping:
    summary: Heartbeat
    x-messages:
      - frame: Text
  "/1/ws/resource":
    parameters: []
components:
  schemas:
    Resource:
      type: object
)",
                                                       "doc.yaml");
  EXPECT_EQ(outline.operations, (Operations{{"/1/api/resource", {"get", "put"}},
                                            {"/1/api/playlists/{guid}", {"delete"}}}));
  EXPECT_EQ(outline.webSocketPaths, (std::set<std::string>{"/1/ws/ping", "/1/ws/resource"}));
}

TEST(OpenApiOutlineTest, CommentsBlankLinesAndTextBelowTheKeysOfAPathAreNotRead) {
  const OpenApiOutline outline = OpenApiOutline::parse(R"(# get:
paths:

  # /1/api/commented:
  /1/api/a:
    description: |
      get:
        post:
      /1/api/inside/a/description:

    # post:
    patch:
      description: >
        put:
info:
  description: |
    /not/a/path:
)",
                                                       "doc.yaml");
  EXPECT_EQ(outline.operations, (Operations{{"/1/api/a", {"patch"}}}));
  EXPECT_TRUE(outline.webSocketPaths.empty());
}

TEST(OpenApiOutlineTest, AMisspeltMethodIsAnErrorThatNamesTheLine) {
  const std::string error = errorOf("paths:\n  /1/api/a:\n    gett:\n      responses: {}\n");
  EXPECT_NE(error.find("doc.yaml:3:"), std::string::npos) << error;
  EXPECT_NE(error.find("gett:"), std::string::npos) << error;
}

TEST(OpenApiOutlineTest, AnUpperCaseMethodIsAnError) {
  EXPECT_NE(errorOf("paths:\n  /1/api/a:\n    GET:\n"), "");
}

TEST(OpenApiOutlineTest, AnUnknownFieldOfAWebSocketEndpointIsAnError) {
  EXPECT_NE(errorOf("paths:\nx-websockets:\n  /1/ws/a:\n    get:\n"), "");
}

TEST(OpenApiOutlineTest, FlowStyleAtTheLevelsReadIsAnError) {
  EXPECT_NE(errorOf("paths: {}\n"), "");
  EXPECT_NE(errorOf("paths:\n  /1/api/a: {get: {}}\n"), "");
  EXPECT_NE(errorOf("paths:\n  /1/api/a:\n    get: {responses: {}}\n"), "");
  EXPECT_NE(errorOf("paths:\n  {/1/api/a: {}}\n"), "");
}

TEST(OpenApiOutlineTest, TabsAndOddIndentsAreErrors) {
  EXPECT_NE(errorOf("paths:\n\t/1/api/a:\n"), "");
  EXPECT_NE(errorOf("paths:\n   /1/api/a:\n"), "");
  EXPECT_NE(errorOf("paths:\n  /1/api/a:\n   get:\n"), "");
  EXPECT_NE(errorOf("paths:\n /1/api/a:\n"), "");
}

TEST(OpenApiOutlineTest, APathOrAMethodGivenTwiceIsAnError) {
  EXPECT_NE(errorOf("paths:\n  /1/api/a:\n    get:\n  /1/api/a:\n    put:\n"), "");
  EXPECT_NE(errorOf("paths:\n  /1/api/a:\n    get:\n    get:\n"), "");
  EXPECT_NE(errorOf("paths:\n  /1/api/a:\n    get:\npaths:\n  /1/api/b:\n    get:\n"), "");
}

TEST(OpenApiOutlineTest, AKeyThatIsNotAPathIsAnError) {
  EXPECT_NE(errorOf("paths:\n  api/a:\n    get:\n"), "");
  EXPECT_NE(errorOf("paths:\n  - /1/api/a\n"), "");
}

TEST(OpenApiOutlineTest, AListInsteadOfTheKeysOfAPathIsAnError) {
  EXPECT_NE(errorOf("paths:\n  /1/api/a:\n    - get\n"), "");
}

TEST(OpenApiOutlineTest, ADocumentWithoutPathsIsAnError) {
  EXPECT_NE(errorOf("openapi: 3.0.3\nx-websockets:\n  /1/ws/a:\n    summary: a\n"), "");
}

TEST(OpenApiOutlineTest, AMissingFileIsAnError) {
  EXPECT_THROW(OpenApiOutline::readFile("/nonexistent/openapi.yaml"), std::runtime_error);
}

}  // namespace
}  // namespace halvor::kelo::test
