#include <gtest/gtest.h>

#include <string>

#include "kelo/controllers/RouteTable.h"
#include "kelo/handlers/http/events/DeleteEvent.h"
#include "support/HandlerTest.h"
#include "support/SimHost.h"
#include "tavelabi/Exceptions.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;
using test::makeRequest;
using test::SimHost;

constexpr const char* kCommand = "/command/eventlog/deleteEvents";

class DeleteEventTest : public test::HandlerTest<DeleteEvent> {
 protected:
  web::HttpResponsePtr remove(tavelabi::ITavel& tavel, const std::string& sessionId) {
    web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
    handler.deleteEvent(makeRequest(web::Delete, "/1/api/events", ""), resp, &tavel, &info,
                        sessionId);
    return resp;
  }

  // The number of events the simulated host's log holds now.
  static int logSize(SimHost& sim) {
    tavelabi::ResourceAction read(CCRUD::Command, "/command/eventlog/getEvents",
                                  Resource("page", ResourceValue(0)), nullptr, "");
    return sim.tavel.processInternalAction(read).values.at("count").getIntValue();
  }
};

TEST_F(DeleteEventTest, SendsTheDeleteCommandAndAnswersStatusOnly) {
  host.answer(kCommand, Resource("count", ResourceValue(12)));
  const web::HttpResponsePtr resp =
      callMember(&DeleteEvent::deleteEvent, makeRequest(web::Delete, "/1/api/events", ""), "s1");
  const tavelabi::ResourceAction& action = host.onlyAction();
  EXPECT_EQ(action.action, CCRUD::Command);
  EXPECT_EQ(action.path, kCommand);
  EXPECT_EQ(action.sessionId, "s1");
  EXPECT_TRUE(action.resource.values.empty());
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->contentType(), web::CT_NONE);
  EXPECT_EQ(resp->body(), "");
}

TEST_F(DeleteEventTest, QueryAndBodyAreNotLookedAt) {
  host.answer(kCommand, Resource());
  web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
  handler.deleteEvent(makeRequest(web::Delete, "/1/api/events", "type=3", R"({"a":1})"), resp,
                      &host, &info, "s1");
  EXPECT_TRUE(host.onlyAction().resource.values.empty());
  EXPECT_EQ(resp->statusCode(), web::k200OK);
}

TEST_F(DeleteEventTest, HostFailureReachesTheFrame) {
  host.fail(kCommand, [] { throw tavelabi::NonExistentSessionException("gone"); });
  EXPECT_THROW(remove(host, "s1"), tavelabi::NonExistentSessionException);
}

TEST_F(DeleteEventTest, ClearsTheSimulatedHostsLog) {
  SimHost sim;
  ASSERT_GT(logSize(sim), 0);
  remove(sim.tavel, SimHost::kAdminSession);
  EXPECT_EQ(logSize(sim), 0);
}

TEST_F(DeleteEventTest, ReadOnlyUserMayNotClearTheLog) {
  SimHost sim;
  const int before = logSize(sim);
  EXPECT_THROW(remove(sim.tavel, SimHost::kViewerSession), tavelabi::AuthorizationFailure);
  EXPECT_EQ(logSize(sim), before);
}

TEST_F(DeleteEventTest, IsRegisteredUnderItsWrapperName) {
  web::HttpAppFramework application;
  RouteTable<DeleteEvent> routes(application);
  DeleteEvent::declareRoutes(routes);
  const std::vector<web::HttpAppFramework::HandlerInfo> expected = {
      {"/1/api/events", web::Delete, "DeleteEvent::deleteEventWrapper"}};
  EXPECT_EQ(application.getHandlersInfo(), expected);
}

}  // namespace
}  // namespace halvor::kelo
