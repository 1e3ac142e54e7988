#include <gtest/gtest.h>

#include <string>

#include "kelo/Exceptions.h"
#include "kelo/handlers/http/generic/CommandHandler.h"
#include "support/HandlerTest.h"
#include "support/SimHost.h"
#include "tavelabi/Exceptions.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using test::makeRequest;
using test::parseBody;
using test::SimHost;

class CommandHandlerTest : public test::HandlerTest<CommandHandler> {
 protected:
  CommandHandlerTest() { host.otherwise(tavelabi::Resource()); }

  web::HttpResponsePtr command(tavelabi::ITavel& tavel, const std::string& query,
                               const std::string& body, const std::string& sessionId = "s1") {
    return call(tavel, web::Put, "/1/api/command", query, body, sessionId);
  }
};

TEST_F(CommandHandlerTest, RunsTheCommandAndAnswersJsonWithoutContentType) {
  host.answer("/command/restartTavel", tavelabi::Resource("value", 2.5));
  const web::HttpResponsePtr resp =
      command(host, "path=%2Fcommand%2FrestartTavel",
              R"({"values":{"delay":{"type":"INT32","intValue":5}}})");

  const tavelabi::ResourceAction& action = host.onlyAction();
  EXPECT_EQ(action.action, CCRUD::Command);
  EXPECT_EQ(action.path, "/command/restartTavel");
  EXPECT_EQ(action.resource.values.at("delay").getIntValue(), 5);
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->contentType(), web::CT_NONE);
  EXPECT_EQ(resp->body(), R"({"values":{"value":{"doubleValue":2.5,"type":"DOUBLE"}}})");
}

TEST_F(CommandHandlerTest, NotJsonRunsTheCommandWithAnEmptyResource) {
  command(host, "path=/command/x", "not json");
  EXPECT_EQ(host.onlyAction().action, CCRUD::Command);
  EXPECT_TRUE(host.onlyAction().resource.values.empty());
}

TEST_F(CommandHandlerTest, SetsStatus200EvenOverAnEarlierStatus) {
  web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
  resp->setStatusCode(202);
  handler.processHttpRequest(makeRequest(web::Put, "/1/api/command", "path=/c", "{}"), resp, &host,
                             &info, "s1");
  EXPECT_EQ(resp->statusCode(), web::k200OK);
}

TEST_F(CommandHandlerTest, MissingPathThrows) {
  EXPECT_THROW(command(host, "cmd=/c", "{}"), RequestMissingQueryParameter);
  EXPECT_TRUE(host.actions().empty());
}

TEST_F(CommandHandlerTest, ListsResourcesOfTheSimulatedHost) {
  SimHost sim;
  const web::HttpResponsePtr resp =
      command(sim.tavel, "path=%2Fresource%2Flist",
              R"({"values":{"value":{"type":"STRING","stringValue":"/user/users/*"}}})",
              SimHost::kViewerSession);
  const protobuf::Resource answer = parseBody(resp->body());
  const auto& list = answer.values().at("value");
  ASSERT_EQ(list.listvalue_size(), 2);
  EXPECT_EQ(list.listvalue(0).stringvalue().value(), "/user/users/admin");
  EXPECT_EQ(list.listvalue(1).stringvalue().value(), "/user/users/viewer");
}

TEST_F(CommandHandlerTest, ReadOnlyUserMayNotRunOtherCommands) {
  SimHost sim;
  EXPECT_THROW(command(sim.tavel, "path=/command/restartTavel", "", SimHost::kViewerSession),
               tavelabi::AuthorizationFailure);
  EXPECT_EQ(sim.tavel.restartRequests(), 0u);
}

}  // namespace
}  // namespace halvor::kelo
