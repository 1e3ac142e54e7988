#include <gtest/gtest.h>

#include "Router.h"

using namespace halvor::kelo::web;

namespace {

class RouterTest : public ::testing::Test {
 protected:
  Router::Match match(const std::string& path, HttpMethod method = Get) {
    parameters.clear();
    return router.match(path, method, parameters);
  }
  Router router;
  std::vector<std::string> parameters;
};

TEST_F(RouterTest, ExactPathFindsItsRoute) {
  router.add("/1/api/login", Router::methodBit(Post), 7);
  auto result = match("/1/api/login", Post);
  EXPECT_EQ(result.outcome, Router::Outcome::Found);
  EXPECT_EQ(result.target, 7u);
  EXPECT_TRUE(parameters.empty());
}

TEST_F(RouterTest, EmptySegmentsDoNotCount) {
  router.add("/a/b", 0, 1);
  EXPECT_EQ(match("//a///b").outcome, Router::Outcome::Found);
  EXPECT_EQ(match("/a/b/").outcome, Router::Outcome::Found);
  EXPECT_EQ(match("a/b").outcome, Router::Outcome::Found);
  EXPECT_EQ(match("/a").outcome, Router::Outcome::NotFound);
  EXPECT_EQ(match("/a/b/c").outcome, Router::Outcome::NotFound);
}

TEST_F(RouterTest, RootPath) {
  router.add("/", 0, 3);
  EXPECT_EQ(match("/").target, 3u);
  EXPECT_EQ(match("//").outcome, Router::Outcome::Found);
  EXPECT_EQ(match("/x").outcome, Router::Outcome::NotFound);
}

TEST_F(RouterTest, ParametersAreExtractedInOrder) {
  router.add("/1/api/users/{user}/files/{file}", Router::methodBit(Get), 4);
  auto result = match("/1/api/users/alice/files/report.pdf");
  ASSERT_EQ(result.outcome, Router::Outcome::Found);
  EXPECT_EQ(result.target, 4u);
  ASSERT_EQ(parameters.size(), 2u);
  EXPECT_EQ(parameters[0], "alice");
  EXPECT_EQ(parameters[1], "report.pdf");
}

TEST_F(RouterTest, ParameterNeedsANonEmptySegment) {
  router.add("/p/{guid}", 0, 1);
  EXPECT_EQ(match("/p/").outcome, Router::Outcome::NotFound);
  EXPECT_EQ(match("/p//x").outcome, Router::Outcome::Found);
  EXPECT_EQ(parameters.at(0), "x");
}

TEST_F(RouterTest, LiteralRouteWinsOverParameterRoute) {
  router.add("/p/{guid}", 0, 1);
  router.add("/p/list", 0, 2);
  EXPECT_EQ(match("/p/list").target, 2u);
  EXPECT_EQ(match("/p/other").target, 1u);
}

TEST_F(RouterTest, OtherMethodOnKnownPathIsNotAllowed) {
  router.add("/x", Router::methodBit(Get), 1);
  router.add("/x", Router::methodBit(Put), 2);
  EXPECT_EQ(match("/x", Put).target, 2u);
  auto result = match("/x", Delete);
  EXPECT_EQ(result.outcome, Router::Outcome::MethodNotAllowed);
  EXPECT_EQ(Router::allowHeader(result.allowedMethods), "GET, HEAD, PUT");
}

TEST_F(RouterTest, TwoRoutesForTheSamePathAndMethodAreRefused) {
  router.add("/x", Router::methodBit(Get) | Router::methodBit(Put), 1);
  EXPECT_THROW(router.add("/x", Router::methodBit(Put), 2), std::invalid_argument);
  EXPECT_THROW(router.add("//x/", Router::methodBit(Get), 3), std::invalid_argument);
  EXPECT_THROW(router.add("/x", 0, 4), std::invalid_argument);
  EXPECT_NO_THROW(router.add("/x", Router::methodBit(Delete), 5));
}

TEST_F(RouterTest, ParameterNamesDoNotKeepTwoRoutesApart) {
  router.add("/p/{guid}/items", Router::methodBit(Get), 1);
  try {
    router.add("/p/{id}/items", Router::methodBit(Get), 2);
    FAIL() << "the second route was accepted";
  } catch (const std::invalid_argument& error) {
    EXPECT_STREQ(error.what(), "Route \"/p/{id}/items\" collides with \"/p/{guid}/items\"");
  }
  EXPECT_NO_THROW(router.add("/p/list/items", Router::methodBit(Get), 3));
  EXPECT_NO_THROW(router.add("/p/{id}/other", Router::methodBit(Get), 4));
  EXPECT_EQ(match("/p/list/items").target, 3u);
}

TEST_F(RouterTest, MethodOnAParameterRouteFallsThroughToTheNextOne) {
  router.add("/x/{a}", Router::methodBit(Get), 1);
  router.add("/x/{b}", Router::methodBit(Post), 2);
  EXPECT_EQ(match("/x/1", Post).target, 2u);
  EXPECT_EQ(match("/x/1", Delete).outcome, Router::Outcome::MethodNotAllowed);
}

TEST_F(RouterTest, HeadIsAdmittedWhereGetIs) {
  router.add("/x", Router::methodBit(Get), 1);
  EXPECT_EQ(match("/x", Head).outcome, Router::Outcome::Found);
  router.add("/y", Router::methodBit(Post), 2);
  EXPECT_EQ(match("/y", Head).outcome, Router::Outcome::MethodNotAllowed);
}

TEST_F(RouterTest, NoConstraintsAdmitEveryMethod) {
  router.add("/any", 0, 1);
  for (HttpMethod method : {Get, Post, Head, Put, Delete, Options, Patch}) {
    EXPECT_EQ(match("/any", method).outcome, Router::Outcome::Found) << toString(method);
  }
}

TEST_F(RouterTest, MalformedPatternsAreRefused) {
  EXPECT_THROW(router.add("no-slash", 0, 1), std::invalid_argument);
  EXPECT_THROW(router.add("/a/{b", 0, 1), std::invalid_argument);
  EXPECT_THROW(router.add("/a/b}", 0, 1), std::invalid_argument);
  EXPECT_THROW(router.add("/a/{b}{c}", 0, 1), std::invalid_argument);
}

TEST_F(RouterTest, CountsParameters) {
  EXPECT_EQ(Router::countParameters("/a/{b}/c/{d}"), 2u);
  EXPECT_EQ(Router::countParameters("/a"), 0u);
}

TEST_F(RouterTest, NormalizesOddPaths) {
  EXPECT_EQ(Router::normalize("//a///b/"), "/a/b");
  EXPECT_EQ(Router::normalize(""), "/");
  EXPECT_EQ(Router::normalize("///"), "/");
}

TEST_F(RouterTest, KnowsPathWhateverTheMethod) {
  router.add("/x/{id}", Router::methodBit(Get), 1);
  EXPECT_TRUE(router.knowsPath("/x/5"));
  EXPECT_FALSE(router.knowsPath("/y"));
}

}  // namespace
