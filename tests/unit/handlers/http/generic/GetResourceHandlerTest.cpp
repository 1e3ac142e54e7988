#include <gtest/gtest.h>

#include <string>

#include "kelo/Exceptions.h"
#include "kelo/handlers/http/generic/GetResourceHandler.h"
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

class GetResourceHandlerTest : public test::HandlerTest<GetResourceHandler> {
 protected:
  GetResourceHandlerTest() { host.otherwise(tavelabi::Resource()); }

  web::HttpResponsePtr get(const std::string& query, const std::string& sessionId = "s1") {
    return call(host, web::Get, "/1/api/resource", query, "", sessionId);
  }
};

TEST_F(GetResourceHandlerTest, ReadsThePathAndAnswersJsonWith200) {
  host.answer("/system/counter", tavelabi::Resource("value", 3));
  const web::HttpResponsePtr resp = get("path=/system/counter");

  const tavelabi::ResourceAction& action = host.onlyAction();
  EXPECT_EQ(action.action, CCRUD::Read);
  EXPECT_EQ(action.path, "/system/counter");
  EXPECT_EQ(action.sessionId, "s1");
  EXPECT_EQ(action.pluginInfo, &info);
  EXPECT_TRUE(action.resource.values.empty());

  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->contentType(), web::CT_APPLICATION_JSON);
  EXPECT_EQ(resp->body(), R"({"values":{"value":{"intValue":3,"type":"INT32"}}})");
}

TEST_F(GetResourceHandlerTest, PercentEncodedPathReachesTheHostDecoded) {
  get("path=%2Fsystem%2Falarms");
  EXPECT_EQ(host.onlyAction().path, "/system/alarms");
}

TEST_F(GetResourceHandlerTest, PlusInThePathIsABlank) {
  get("path=%2Fsystem%2Fmy+name");
  EXPECT_EQ(host.onlyAction().path, "/system/my name");
}

TEST_F(GetResourceHandlerTest, OtherParametersAroundThePathAreIgnored) {
  get("x=1&path=%2Fa&y=");
  EXPECT_EQ(host.onlyAction().path, "/a");
}

TEST_F(GetResourceHandlerTest, OfARepeatedPathTheLastOneWins) {
  get("path=/first&path=/second");
  EXPECT_EQ(host.onlyAction().path, "/second");
}

TEST_F(GetResourceHandlerTest, ABadPercentEscapeGivesTheHostAnEmptyPath) {
  get("path=%2Fabc%2");
  EXPECT_EQ(host.onlyAction().path, "");
  host.clearActions();
  get("path=%zz");
  EXPECT_EQ(host.onlyAction().path, "");
}

TEST_F(GetResourceHandlerTest, PathIsTakenAsItStandsWithoutPrefix) {
  get("path=no-leading-slash/..");
  EXPECT_EQ(host.onlyAction().path, "no-leading-slash/..");
}

TEST_F(GetResourceHandlerTest, MissingPathThrowsWithoutAskingTheHost) {
  for (const std::string query : {"", "   ", "x=1", "path=", "Path=/a", "path"}) {
    try {
      get(query);
      ADD_FAILURE() << "no exception for query \"" << query << "\"";
    } catch (const RequestMissingQueryParameter& error) {
      EXPECT_STREQ(error.what(), "Request missing query parameter: path.") << query;
    }
  }
  EXPECT_TRUE(host.actions().empty());
}

TEST_F(GetResourceHandlerTest, LoopbackClientIsMarkedLocal) {
  get("path=/a");
  EXPECT_TRUE(host.onlyAction().isLocalHost);
}

TEST_F(GetResourceHandlerTest, RemoteClientIsNotLocalWhileTheServerIsNotRunning) {
  web::HttpRequestPtr req = makeRequest(web::Get, "/1/api/resource", "path=/a");
  req->setPeerAddr(web::InetAddress("10.1.2.3", 40000));
  web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
  handler.processHttpRequest(req, resp, &host, &info, "s1");
  EXPECT_FALSE(host.onlyAction().isLocalHost);
}

TEST_F(GetResourceHandlerTest, ListOfThreeStringsKeepsItsOrder) {
  host.answer("/l", tavelabi::Resource(std::vector<std::string>{"c", "a", "b"}));
  const protobuf::Resource message = parseBody(get("path=/l")->body());
  const auto& list = message.values().at("value");
  EXPECT_EQ(list.type(), protobuf::ResourceValue::LIST_VALUE);
  ASSERT_EQ(list.listvalue_size(), 3);
  EXPECT_EQ(list.listvalue(0).stringvalue().value(), "c");
  EXPECT_EQ(list.listvalue(1).stringvalue().value(), "a");
  EXPECT_EQ(list.listvalue(2).stringvalue().value(), "b");
}

TEST_F(GetResourceHandlerTest, ByteArrayIsPrintedAsBytesWithoutType) {
  tavelabi::ResourceValue bytes;
  bytes.setByteArray({0x01, 0xff});
  host.answer("/b", tavelabi::Resource("blob", bytes));
  const web::HttpResponsePtr resp = get("path=/b");
  EXPECT_EQ(resp->body(), R"({"values":{"blob":{"bytesValue":"Af8="}}})");
}

TEST_F(GetResourceHandlerTest, EmptyResourceIsAnEmptyObject) {
  const web::HttpResponsePtr resp = get("path=/empty");
  EXPECT_EQ(resp->body(), "{}");
  EXPECT_EQ(resp->contentType(), web::CT_APPLICATION_JSON);
}

TEST_F(GetResourceHandlerTest, HostFailurePassesThrough) {
  host.fail("/x", [] { throw tavelabi::NonExistentResourcePathException("No resource at /x"); });
  EXPECT_THROW(get("path=/x"), tavelabi::NonExistentResourcePathException);
}

}  // namespace
}  // namespace halvor::kelo
