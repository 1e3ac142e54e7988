#include <google/protobuf/wrappers.pb.h>
#include <gtest/gtest.h>

#include "halvor/protobuf/Resource.pb.h"
#include "kelo/handlers/toolkit/JsonReplies.h"

namespace halvor::kelo::test {
namespace {

web::HttpResponsePtr freshResponse() {
  web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
  resp->setStatusCode(299);  // shows whether the reply set a status of its own
  return resp;
}

TEST(JsonRepliesTest, AMessageIsAnsweredAsJsonWith200) {
  web::HttpResponsePtr resp = freshResponse();
  protobuf::ResourceValue value;
  value.set_type(protobuf::ResourceValue::INT32);
  value.mutable_intvalue()->set_value(7);
  JsonReplies::reply(resp, value);
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->contentType(), web::CT_APPLICATION_JSON);
  EXPECT_EQ(resp->body(), R"({"intValue":7,"type":"INT32"})");
}

TEST(JsonRepliesTest, MembersAtTheirDefaultArePrintedOnlyWhenAsked) {
  google::protobuf::Int32Value zero;
  web::HttpResponsePtr plain = freshResponse();
  JsonReplies::reply(plain, zero);
  web::HttpResponsePtr withDefaults = freshResponse();
  JsonReplies::replyWithDefaults(withDefaults, protobuf::Resource());
  EXPECT_EQ(withDefaults->body(), R"({"values":{}})");
  web::HttpResponsePtr without = freshResponse();
  JsonReplies::reply(without, protobuf::Resource());
  EXPECT_EQ(without->body(), "{}");
}

TEST(JsonRepliesTest, AHostResourceIsPrintedAsResourceJson) {
  web::HttpResponsePtr resp = freshResponse();
  JsonReplies::replyWithResource(resp, tavelabi::Resource("value", "on"));
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->body(), R"({"values":{"value":{"stringValue":"on","type":"STRING"}}})");
}

TEST(JsonRepliesTest, SetJsonLeavesTheStatusAlone) {
  web::HttpResponsePtr resp = freshResponse();
  JsonReplies::setJson(resp, "[]");
  EXPECT_EQ(resp->statusCode(), 299);
  EXPECT_EQ(resp->contentType(), web::CT_APPLICATION_JSON);
  EXPECT_EQ(resp->body(), "[]");
}

}  // namespace
}  // namespace halvor::kelo::test
