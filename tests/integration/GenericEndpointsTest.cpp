// The generic resource and command endpoints inside the plug-in inside the simulated host, spoken
// to over HTTP and HTTPS with a real client.
#include <google/protobuf/util/message_differencer.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "halvor/protobuf/Resource.pb.h"
#include "kelo/common/JsonOptions.h"
#include "kelo/common/ResourceDepth.h"
#include "support/KeloTestServer.h"
#include "support/MiniHttpClient.h"

namespace halvor::kelo::test {
namespace {

using Headers = std::vector<std::pair<std::string, std::string>>;

// Resources of 26 keys and a nested map of the same keys, written out of key order, at the
// "keyed" path of the HTTP and of the HTTPS run.
std::string keyedFixture() {
  std::string values;
  for (const char key : std::string("qwertyuiopasdfghjklzxcvbnm")) {
    values += std::string(values.empty() ? "" : ",") + "\"" + key + "\":{\"int\":" +
              std::to_string(static_cast<int>(key)) + "}";
  }
  const std::string resource = "{" + values + ",\"nested\":{\"map\":{" + values + "}}}";
  return "{\"resources\":{\"/generic/plain/keyed\":" + resource +
         ",\"/generic/tls/keyed\":" + resource + "}}";
}

// One server for the whole process: the web application can run only once per process.
class GenericEndpointsTest : public ::testing::TestWithParam<bool> {
 protected:
  static void SetUpTestSuite() {
    KeloTestServerOptions options;
    options.fixtures = {keyedFixture(), R"({"resources": {
      "/generic/plain/encoded": {"value": {"int": 5}}, "/generic/tls/encoded": {"value": {"int": 5}},
      "/generic/plain/doomed": {"value": {"int": 1}}, "/generic/tls/doomed": {"value": {"int": 1}}
    }})"};
    server = std::make_unique<KeloTestServer>(options);
    server->start();
    adminSession = server->openSession("admin");
    viewerSession = server->openSession("viewer");
  }
  static void TearDownTestSuite() { server.reset(); }

  bool tls() const { return GetParam(); }
  std::uint16_t port() const { return tls() ? server->httpsPort() : server->httpPort(); }
  static Headers cookie(const std::string& session) { return {{"Cookie", "SessionID=" + session}}; }

  MiniResponse call(const std::string& method, const std::string& target,
                    const std::string& session, const std::string& body = "") {
    return MiniHttpClient::once(port(), tls(), method, target, cookie(session), body);
  }
  // A path of this test's own, so that the HTTP and HTTPS runs do not meet.
  std::string own(const std::string& name) const {
    return std::string("/generic/") + (tls() ? "tls/" : "plain/") + name;
  }

  static protobuf::Resource parsed(const std::string& body) {
    protobuf::Resource message;
    EXPECT_TRUE(JsonOptions::fromJson(body, message).ok()) << body;
    return message;
  }

  static std::unique_ptr<KeloTestServer> server;
  static std::string adminSession;
  static std::string viewerSession;
};

std::unique_ptr<KeloTestServer> GenericEndpointsTest::server;
std::string GenericEndpointsTest::adminSession;
std::string GenericEndpointsTest::viewerSession;

const char* const kNested =
    R"({"values":{)"
    R"("flag":{"type":"BOOL","boolValue":true},)"
    R"("gain":{"type":"FLOAT","floatValue":0.5},)"
    R"("frequency":{"type":"DOUBLE","doubleValue":101.1},)"
    R"("count":{"type":"INT32","intValue":2147483647},)"
    R"("name":{"type":"STRING","stringValue":"TX \u00e9"},)"
    R"("list":{"type":"LIST_VALUE","listValue":[{"type":"LIST_VALUE","listValue":[)"
    R"({"type":"MAP_VALUE","mapValue":{"x":{"type":"INT32","intValue":1}}}]}]},)"
    R"("map":{"type":"MAP_VALUE","mapValue":{"inner":{"type":"MAP_VALUE","mapValue":{)"
    R"("l":{"type":"LIST_VALUE","listValue":[{"type":"STRING","stringValue":"a"}]}}}}}}})";

TEST_P(GenericEndpointsTest, PostThenGetGivesEveryValueTypeBack) {
  const std::string path = own("all");
  const MiniResponse created = call("POST", "/1/api/resource?path=" + path, adminSession, kNested);
  ASSERT_EQ(created.status, 200) << created.body;
  EXPECT_EQ(created.header("Content-Type").rfind("application/json", 0), 0u);

  const MiniResponse read = call("GET", "/1/api/resource?path=" + path, adminSession);
  ASSERT_EQ(read.status, 200) << read.body;
  EXPECT_TRUE(
      google::protobuf::util::MessageDifferencer::Equals(parsed(read.body), parsed(kNested)))
      << read.body;
}

TEST_P(GenericEndpointsTest, EqualResourcesAreAnsweredAsEqualBytesInKeyOrder) {
  std::string keyed;
  for (char key = 'a'; key <= 'z'; ++key) {
    keyed += std::string(key == 'a' ? "" : ",") + "\"" + key +
             "\":{\"intValue\":" + std::to_string(static_cast<int>(key)) + ",\"type\":\"INT32\"}";
  }
  std::string expected = "{\"values\":{" + keyed + "}}";
  // "nested" sorts between "n" and "o".
  const std::string afterN = "\"n\":{\"intValue\":110,\"type\":\"INT32\"}";
  expected.insert(expected.find(afterN) + afterN.size(),
                  ",\"nested\":{\"mapValue\":{" + keyed + "},\"type\":\"MAP_VALUE\"}");

  for (int round = 0; round < 3; ++round) {
    const MiniResponse read = call("GET", "/1/api/resource?path=" + own("keyed"), adminSession);
    ASSERT_EQ(read.status, 200) << read.body;
    EXPECT_EQ(read.body, expected);
  }
}

// Lists one value deep each around a string: the parser takes about 98 levels of them.
std::string listsJson(int depth) {
  std::string inner = R"({"type":"STRING","stringValue":"bottom"})";
  for (int level = 1; level < depth; ++level) {
    inner = R"({"type":"LIST_VALUE","listValue":[)" + inner + "]}";
  }
  return R"({"values":{"value":)" + inner + "}}";
}

TEST_P(GenericEndpointsTest, ResourceTooDeepToPrintIsRefusedBeforeItIsStored) {
  const std::string target = "/1/api/resource?path=" + own("deep");
  const std::string deepest = listsJson(ResourceDepth::kMaxDepth);
  ASSERT_EQ(call("POST", target, adminSession, deepest).status, 200);
  const MiniResponse stored = call("GET", target, adminSession);
  ASSERT_EQ(stored.status, 200);
  EXPECT_EQ(ResourceDepth::of(parsed(stored.body)), ResourceDepth::kMaxDepth);
  EXPECT_TRUE(
      google::protobuf::util::MessageDifferencer::Equals(parsed(stored.body), parsed(deepest)));

  for (const int depth : {ResourceDepth::kMaxDepth + 1, 95}) {
    const MiniResponse refused = call("PUT", target, adminSession, listsJson(depth));
    EXPECT_EQ(refused.status, 500);
    EXPECT_NE(refused.body.find("nest deeper than 63 levels"), std::string::npos) << refused.body;
    const MiniResponse again = call("GET", target, adminSession);
    ASSERT_EQ(again.status, 200);
    EXPECT_EQ(again.body, stored.body);
  }

  const MiniResponse created =
      call("POST", "/1/api/resource?path=" + own("deeper"), adminSession, listsJson(95));
  EXPECT_EQ(created.status, 500);
  EXPECT_FALSE(server->host().peek(own("deeper")).has_value());
}

TEST_P(GenericEndpointsTest, PercentEncodedPathReachesTheHostDecoded) {
  std::string encoded = own("encoded");
  for (std::string::size_type at = 0; (at = encoded.find('/', at)) != std::string::npos;) {
    encoded.replace(at, 1, "%2F");
  }
  const MiniResponse read = call("GET", "/1/api/resource?path=" + encoded, adminSession);
  ASSERT_EQ(read.status, 200) << read.body;
  EXPECT_EQ(read.body, R"({"values":{"value":{"intValue":5,"type":"INT32"}}})");
}

TEST_P(GenericEndpointsTest, MissingPathIs500PlainText) {
  const MiniResponse answer = call("GET", "/1/api/resource", adminSession);
  EXPECT_EQ(answer.status, 500);
  EXPECT_EQ(answer.header("Content-Type").rfind("text/plain", 0), 0u);
  EXPECT_NE(answer.body.find("Request missing query parameter: path."), std::string::npos);
}

TEST_P(GenericEndpointsTest, NotJsonCreatesAnEmptyResource) {
  const MiniResponse created =
      call("POST", "/1/api/resource?path=" + own("notjson"), adminSession, "not json");
  EXPECT_EQ(created.status, 200);
  EXPECT_EQ(created.body, "{}");
  const auto stored = server->host().peek(own("notjson"));
  ASSERT_TRUE(stored.has_value());
  EXPECT_TRUE(stored->values.empty());
}

TEST_P(GenericEndpointsTest, DeleteUnderTheResourceUrlMatchesNoRoute) {
  const MiniResponse answer = call("DELETE", "/1/api/resource?path=/x", adminSession);
  EXPECT_TRUE(answer.status == 404 || answer.status == 405) << answer.status;
}

TEST_P(GenericEndpointsTest, DeleteUnderTheCommandUrlRemoves) {
  const MiniResponse answer = call("DELETE", "/1/api/command?path=" + own("doomed"), adminSession);
  EXPECT_EQ(answer.status, 200);
  EXPECT_EQ(answer.body, "");
  EXPECT_FALSE(server->host().peek(own("doomed")).has_value());
}

TEST_P(GenericEndpointsTest, DeadSessionIs440AndClosesTheConnection) {
  const MiniResponse answer = call("GET", "/1/api/resource?path=/x", "no-such-session");
  EXPECT_EQ(answer.status, 440);
  EXPECT_EQ(answer.body, "");
  EXPECT_TRUE(answer.closedByServer);
}

TEST_P(GenericEndpointsTest, ReadOnlyUserWritingIs403) {
  const MiniResponse answer =
      call("PUT", "/1/api/resource?path=" + own("viewer"), viewerSession, "{}");
  EXPECT_EQ(answer.status, 403);
  EXPECT_TRUE(answer.closedByServer);
}

TEST_P(GenericEndpointsTest, SessionCookieIsEchoedWithItsPath) {
  const MiniResponse answer = call("PUT", "/1/api/command?path=%2Fresource%2Flist", adminSession,
                                   R"({"values":{"value":{"type":"STRING","stringValue":"/x"}}})");
  EXPECT_EQ(answer.status, 200) << answer.body;
  bool echoed = false;
  for (const std::string& cookie : answer.setCookies()) {
    echoed = echoed || cookie.rfind("SessionID=" + adminSession + ";Path=/", 0) == 0;
  }
  EXPECT_TRUE(echoed);
}

INSTANTIATE_TEST_SUITE_P(PlainAndTls, GenericEndpointsTest, ::testing::Values(false, true),
                         [](const ::testing::TestParamInfo<bool>& instance) {
                           return instance.param ? "Https" : "Http";
                         });

}  // namespace
}  // namespace halvor::kelo::test
