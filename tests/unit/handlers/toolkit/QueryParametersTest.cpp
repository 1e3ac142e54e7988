#include <gtest/gtest.h>

#include "kelo/Exceptions.h"
#include "kelo/handlers/toolkit/QueryParameters.h"
#include "support/Requests.h"

namespace halvor::kelo::test {
namespace {

web::HttpRequestPtr withQuery(const std::string& query) {
  return makeRequest(web::Get, "/1/api/anything", query);
}

TEST(QueryParametersTest, ARequiredParameterIsPercentDecoded) {
  EXPECT_EQ(QueryParameters::required(withQuery("id=%2Fsnmp%2Fa+b"), "id"), "/snmp/a b");
}

TEST(QueryParametersTest, AMissingRequiredParameterNamesItself) {
  for (const std::string query : {"", "ID=1", "idx=2", "id"}) {
    try {
      QueryParameters::required(withQuery(query), "id");
      ADD_FAILURE() << "no exception for \"" << query << "\"";
    } catch (const RequestMissingQueryParameter& error) {
      EXPECT_STREQ(error.what(), "Request missing query parameter: id.") << query;
    }
  }
}

TEST(QueryParametersTest, AKeyWithAnEmptyValueIsNoParameter) {
  EXPECT_THROW(QueryParameters::required(withQuery("id="), "id"), RequestMissingQueryParameter);
  EXPECT_EQ(QueryParameters::optional(withQuery("id=&x=1"), "id"), std::nullopt);
}

TEST(QueryParametersTest, AnOptionalParameterIsAbsentOrDecoded) {
  EXPECT_EQ(QueryParameters::optional(withQuery("x=1"), "id"), std::nullopt);
  EXPECT_EQ(QueryParameters::optional(withQuery("x=1&id=%41"), "id"),
            std::optional<std::string>("A"));
}

TEST(QueryParametersTest, OfARepeatedParameterTheLastOneWins) {
  EXPECT_EQ(QueryParameters::required(withQuery("id=1&id=2"), "id"), "2");
}

TEST(QueryParametersTest, AValueThatDecodesToNothingIsStillAValue) {
  EXPECT_EQ(QueryParameters::required(withQuery("id=%zz"), "id"), "");
}

TEST(QueryParametersTest, TheUndecodedMapHasEveryStrictPairStillPercentCoded) {
  const std::unordered_map<std::string, std::string> query =
      QueryParameters::undecoded(withQuery("path=%2Fa&x=1&empty=&x=2&=v"));
  const std::unordered_map<std::string, std::string> expected{{"path", "%2Fa"}, {"x", "2"}};
  EXPECT_EQ(query, expected);
  EXPECT_TRUE(QueryParameters::undecoded(withQuery("")).empty());
}

}  // namespace
}  // namespace halvor::kelo::test
