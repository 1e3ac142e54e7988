#include <gtest/gtest.h>

#include "halvor/protobuf/Resource.pb.h"
#include "kelo/Exceptions.h"
#include "kelo/common/JsonOptions.h"
#include "kelo/handlers/toolkit/RequestBodies.h"
#include "support/Requests.h"

namespace halvor::kelo::test {
namespace {

web::HttpRequestPtr withBody(const std::string& body) {
  return makeRequest(web::Post, "/1/api/anything", "", body);
}

TEST(RequestBodiesTest, AnEmptyBodyIsMissingFormDataBeforeItIsInvalidJson) {
  try {
    RequestBodies::json(withBody(""));
    FAIL() << "no exception";
  } catch (const RequestMissingFormData& error) {
    EXPECT_STREQ(error.what(), "Request missing form data: body.");
  }
  EXPECT_THROW(RequestBodies::message<protobuf::Resource>(withBody("")), RequestMissingFormData);
}

TEST(RequestBodiesTest, ABodyThatIsNotJsonIsInvalidJsonWithTheParsersWords) {
  try {
    RequestBodies::json(withBody("{\"a\":"));
    FAIL() << "no exception";
  } catch (const InvalidJson& error) {
    const std::string text = error.what();
    EXPECT_EQ(text.rfind("Invalid Json: * Line 1, Column 6", 0), 0u) << text;
    EXPECT_EQ(text.back(), '.');
  }
}

TEST(RequestBodiesTest, JsonIsReadWithItsComments) {
  const Json::Value value = RequestBodies::json(withBody("{\"a\": 1 /* one */}"));
  EXPECT_EQ(value["a"].asInt(), 1);
}

TEST(RequestBodiesTest, AMessageIsFilledFromTheBody) {
  const auto message = RequestBodies::message<protobuf::ResourceValue>(
      withBody(R"({"type":"STRING","stringValue":"x"})"));
  EXPECT_EQ(message.type(), protobuf::ResourceValue::STRING);
  EXPECT_EQ(message.stringvalue().value(), "x");
}

TEST(RequestBodiesTest, JsonThatDoesNotFitTheMessageIsNoFailureOfItsOwn) {
  const std::string body = R"({"stringValue":"kept","noSuchField":1})";
  protobuf::ResourceValue converted;
  ASSERT_FALSE(JsonOptions::fromJson(body, converted).ok());
  protobuf::ResourceValue message;
  ASSERT_NO_THROW(message = RequestBodies::message<protobuf::ResourceValue>(withBody(body)));
  EXPECT_EQ(message.SerializeAsString(), converted.SerializeAsString());
}

}  // namespace
}  // namespace halvor::kelo::test
