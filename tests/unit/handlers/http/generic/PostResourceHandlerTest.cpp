#include <google/protobuf/util/message_differencer.h>
#include <gtest/gtest.h>

#include <string>

#include "kelo/Exceptions.h"
#include "kelo/handlers/http/generic/GetResourceHandler.h"
#include "kelo/handlers/http/generic/PostResourceHandler.h"
#include "support/HandlerTest.h"
#include "support/SimHost.h"
#include "tavelabi/Exceptions.h"
#include "tavelabi/ResourceValue.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using tavelabi::ResourceValueType;
using test::makeRequest;
using test::parseBody;
using test::SimHost;

class PostResourceHandlerTest : public test::HandlerTest<PostResourceHandler> {
 protected:
  PostResourceHandlerTest() { host.otherwise(tavelabi::Resource()); }

  web::HttpResponsePtr post(tavelabi::ITavel& tavel, const std::string& query,
                            const std::string& body, const std::string& sessionId = "s1") {
    return call(tavel, web::Post, "/1/api/resource", query, body, sessionId);
  }
};

TEST_F(PostResourceHandlerTest, CreatesTheBodysResourceAndAnswersJson) {
  host.answer("/presets/new", tavelabi::Resource("value", "stored"));
  const web::HttpResponsePtr resp =
      post(host, "path=%2Fpresets%2Fnew",
           R"({"values":{"name":{"type":"STRING","stringValue":"Morning"},)"
           R"("level":{"type":"INT32","intValue":-4}}})");

  const tavelabi::ResourceAction& action = host.onlyAction();
  EXPECT_EQ(action.action, CCRUD::Create);
  EXPECT_EQ(action.path, "/presets/new");
  EXPECT_EQ(action.sessionId, "s1");
  ASSERT_EQ(action.resource.values.size(), 2u);
  EXPECT_EQ(action.resource.values.at("name").getStringValue(), "Morning");
  EXPECT_EQ(action.resource.values.at("level").getIntValue(), -4);

  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->contentType(), web::CT_APPLICATION_JSON);
  EXPECT_EQ(resp->body(), R"({"values":{"value":{"stringValue":"stored","type":"STRING"}}})");
}

TEST_F(PostResourceHandlerTest, NotJsonRunsACreateWithAnEmptyResource) {
  post(host, "path=/x", "not json");
  EXPECT_EQ(host.onlyAction().action, CCRUD::Create);
  EXPECT_TRUE(host.onlyAction().resource.values.empty());
}

TEST_F(PostResourceHandlerTest, EmptyBodyRunsACreateWithAnEmptyResource) {
  post(host, "path=/x", "");
  EXPECT_TRUE(host.onlyAction().resource.values.empty());
}

TEST_F(PostResourceHandlerTest, UnknownFieldFailsTheParseButTheActionStillRuns) {
  // The parse options refuse unknown fields; whatever the parser kept before it stopped goes on.
  post(host, "path=/x", R"({"values":{"a":{"type":"INT32","intValue":1}},"bogus":true})");
  const tavelabi::Resource& sent = host.onlyAction().resource;
  EXPECT_LE(sent.values.size(), 1u);
  if (!sent.values.empty()) {
    EXPECT_EQ(sent.values.at("a").getIntValue(), 1);
  }
}

TEST_F(PostResourceHandlerTest, ValueWithoutTypeReachesTheHostUnspecified) {
  post(host, "path=/x", R"({"values":{"value":{"intValue":3}}})");
  const tavelabi::Resource& sent = host.onlyAction().resource;
  ASSERT_EQ(sent.values.count("value"), 1u);
  EXPECT_EQ(sent.values.at("value").getType(), ResourceValueType::UNSPECIFIED_RESOURCE_TYPE);
}

TEST_F(PostResourceHandlerTest, PrintedByteArraySentBackReachesTheHostUnspecified) {
  // A host byte array is answered as bytesValue without type; sent back as it came, the host
  // gets a value of no type.
  post(host, "path=/x", R"({"values":{"blob":{"bytesValue":"Af8="}}})");
  const tavelabi::Resource& sent = host.onlyAction().resource;
  ASSERT_EQ(sent.values.count("blob"), 1u);
  EXPECT_EQ(sent.values.at("blob").getType(), ResourceValueType::UNSPECIFIED_RESOURCE_TYPE);
}

TEST_F(PostResourceHandlerTest, EmptyListReachesTheHostAsAnEmptyList) {
  post(host, "path=/x", R"({"values":{"value":{"type":"LIST_VALUE"}}})");
  const tavelabi::ResourceValue& sent = host.onlyAction().resource.values.at("value");
  EXPECT_EQ(sent.getType(), ResourceValueType::LIST_VALUE);
  EXPECT_TRUE(sent.getListValue().empty());
}

TEST_F(PostResourceHandlerTest, SerializedValueReachesTheHostAsTheBytesOfTheWholeMessage) {
  const std::string valueJson = R"({"stringValue":"inner","type":"SERIALIZED_RESOURCE_VALUE"})";
  post(host, "path=/x", R"({"values":{"value":)" + valueJson + "}}");
  const tavelabi::ResourceValue& sent = host.onlyAction().resource.values.at("value");
  ASSERT_EQ(sent.getType(), ResourceValueType::UINT8_ARRAY);

  protobuf::ResourceValue carried;
  ASSERT_TRUE(
      carried.ParseFromArray(sent.getByteArray(), static_cast<int>(sent.getByteArraySize())));
  protobuf::ResourceValue expected;
  ASSERT_TRUE(JsonOptions::fromJson(valueJson, expected).ok());
  EXPECT_TRUE(google::protobuf::util::MessageDifferencer::Equals(carried, expected))
      << carried.DebugString();
}

TEST_F(PostResourceHandlerTest, MissingPathThrowsBeforeTheBodyIsLookedAt) {
  EXPECT_THROW(post(host, "paths=/x", "{}"), RequestMissingQueryParameter);
  EXPECT_TRUE(host.actions().empty());
}

// ---- against the simulated host ----

// Every value type a client can send, lists and maps nested in each other.
const char* const kEveryType =
    R"({"values":{)"
    R"("flag":{"type":"BOOL","boolValue":false},)"
    R"("gain":{"type":"FLOAT","floatValue":1.5},)"
    R"("frequency":{"type":"DOUBLE","doubleValue":98.7654321},)"
    R"("count":{"type":"INT32","intValue":-2147483648},)"
    R"("name":{"type":"STRING","stringValue":"Ünïcode \"quoted\""},)"
    R"("empty":{"type":"LIST_VALUE"},)"
    R"("nested":{"type":"LIST_VALUE","listValue":[)"
    R"({"type":"INT32","intValue":1},)"
    R"({"type":"LIST_VALUE","listValue":[{"type":"STRING","stringValue":"deep"}]},)"
    R"({"type":"MAP_VALUE","mapValue":{"k":{"type":"BOOL","boolValue":true}}}]},)"
    R"("site":{"type":"MAP_VALUE","mapValue":{)"
    R"("latitude":{"type":"DOUBLE","doubleValue":59.3293},)"
    R"("tags":{"type":"LIST_VALUE","listValue":[{"type":"STRING","stringValue":"a"},)"
    R"({"type":"STRING","stringValue":"b"}]},)"
    R"("inner":{"type":"MAP_VALUE","mapValue":{"z":{"type":"FLOAT","floatValue":-0.25}}}}}}})";

TEST_F(PostResourceHandlerTest, EveryValueTypeSurvivesPostThenGet) {
  SimHost sim;
  const web::HttpResponsePtr created =
      post(sim.tavel, "path=%2Froundtrip%2Fall", kEveryType, SimHost::kAdminSession);
  const protobuf::Resource sent = parseBody(kEveryType);
  EXPECT_TRUE(google::protobuf::util::MessageDifferencer::Equals(parseBody(created->body()), sent))
      << created->body();

  GetResourceHandler getter;
  web::HttpResponsePtr read = web::HttpResponse::newHttpResponse();
  getter.processHttpRequest(makeRequest(web::Get, "/1/api/resource", "path=/roundtrip/all"), read,
                            &sim.tavel, &info, SimHost::kAdminSession);
  EXPECT_EQ(read->statusCode(), web::k200OK);
  EXPECT_TRUE(google::protobuf::util::MessageDifferencer::Equals(parseBody(read->body()), sent))
      << read->body();
}

TEST_F(PostResourceHandlerTest, ReadOnlyUserIsRefused) {
  SimHost sim;
  EXPECT_THROW(post(sim.tavel, "path=/x", kEveryType, SimHost::kViewerSession),
               tavelabi::AuthorizationFailure);
  EXPECT_FALSE(sim.tavel.peek("/x").has_value());
}

TEST_F(PostResourceHandlerTest, UnknownSessionIsRefused) {
  SimHost sim;
  EXPECT_THROW(post(sim.tavel, "path=/x", "{}", "no-such-session"),
               tavelabi::NonExistentSessionException);
}

}  // namespace
}  // namespace halvor::kelo
