#include <gtest/gtest.h>

#include <string>

#include "kelo/handlers/http/meters/GetMetersDashboard.h"
#include "support/HandlerTest.h"
#include "tavelabi/Exceptions.h"
#include "unit/handlers/http/meters/MeterResources.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;
using test::FakePluginInfo;
using test::MeterResources;

class GetMetersDashboardTest : public test::HandlerTest<GetMetersDashboard> {
 protected:
  GetMetersDashboardTest() {
    host.answer(CCRUD::Command, "/resource/list",
                MeterResources::listing({"/meters/a/list", "/meters/b/list"}));
    host.answer("/meters/a/list", MeterResources::listing({"/meters/a/g"}, {{"label", "A"}}));
    host.answer("/meters/a/g", MeterResources::listing({"/meters/a/g/m"}, {{"label", "G"}}));
    host.answer("/meters/a/g/m", Resource(ResourceValue(2.25)));
    host.answer("/meters/b/list", MeterResources::listing({"/meters/b/empty"}, {{"label", "B"}}));
    host.answer("/meters/b/empty", MeterResources::listing({}, {{"label", "E"}}));
  }

  web::HttpResponsePtr get() {
    return call(host, web::Get, "/1/api/meters/dashboard/available", "", "", "client");
  }
};

TEST_F(GetMetersDashboardTest, ListsTheCollectionsUnderThePluginsOwnSession) {
  get();
  const tavelabi::ResourceAction list = host.actions().at(0);
  EXPECT_EQ(list.action, CCRUD::Command);
  EXPECT_EQ(list.path, "/resource/list");
  EXPECT_EQ(list.sessionId, FakePluginInfo::kSessionId);
  EXPECT_EQ(list.pluginInfo, &info);
  ASSERT_EQ(list.resource.values.size(), 1u);
  EXPECT_EQ(list.resource.values.at("value").getStringValue(), "/meters/**/list");
}

TEST_F(GetMetersDashboardTest, ReadsEachCollectionUnderTheClientsSessionAsActivity) {
  get();
  const auto actions = host.actions();
  ASSERT_EQ(actions.size(), 6u);
  for (std::size_t i = 1; i < actions.size(); ++i) {
    EXPECT_EQ(actions[i].action, CCRUD::Read);
    EXPECT_EQ(actions[i].sessionId, "client") << actions[i].path;
    EXPECT_EQ(MeterResources::flagOf(actions[i]), 0) << actions[i].path;
  }
  EXPECT_EQ(actions[1].path, "/meters/a/list");
  EXPECT_EQ(actions[4].path, "/meters/b/list");
}

TEST_F(GetMetersDashboardTest, AnswersEveryCollectionInListOrderAsJson) {
  const web::HttpResponsePtr resp = get();
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->contentType(), web::CT_APPLICATION_JSON);
  EXPECT_EQ(resp->body(),
            R"({"collections":[{"label":"A","groups":[{"label":"G","meters":[{"value":{"values":)"
            R"({"value":{"doubleValue":2.25,"type":"DOUBLE"}}},"device":{}}]}]},)"
            R"({"label":"B","groups":[{"label":"E"}]}]})");
}

TEST_F(GetMetersDashboardTest, NoCollectionIsAnEmptyAnswer) {
  host.answer(CCRUD::Command, "/resource/list", MeterResources::listing({}));
  const web::HttpResponsePtr resp = get();
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->body(), "{}");
}

TEST_F(GetMetersDashboardTest, AListingWithoutValueThrows) {
  host.answer(CCRUD::Command, "/resource/list", Resource());
  EXPECT_THROW(get(), std::out_of_range);
}

TEST_F(GetMetersDashboardTest, ADeadClientSessionIs440ThroughTheFrame) {
  test::installHost(&host, &info);
  host.fail("/meters/a/list",
            [] { throw tavelabi::NonExistentSessionException("Session client does not exist"); });
  const web::HttpResponsePtr resp = test::throughFrame(
      handler, test::makeRequest(web::Get, "/1/api/meters/dashboard/available", ""));
  EXPECT_EQ(resp->statusCode(), 440);
}

}  // namespace
}  // namespace halvor::kelo
