#include <gtest/gtest.h>

#include <string>

#include "kelo/Exceptions.h"
#include "kelo/handlers/http/meters/GetMeterCollections.h"
#include "support/HandlerTest.h"
#include "tavelabi/Exceptions.h"
#include "unit/handlers/http/meters/MeterResources.h"
#include "unit/handlers/ws/WsTestSupport.h"

namespace halvor::kelo {
namespace {

using tavelabi::Resource;
using tavelabi::ResourceValue;
using test::MeterResources;

class GetMeterCollectionsTest : public test::HandlerTest<GetMeterCollections> {
 protected:
  GetMeterCollectionsTest() {
    host.answer("/meters/rf/list",
                MeterResources::listing({"/meters/rf/out"},
                                        {{"label", "RF output"}, {"path", "/meters/rf/list"}}));
    host.answer("/meters/rf/out",
                MeterResources::listing(
                    {"/meters/rf/out/power"},
                    {{"guid", "G-OUT"}, {"label", "Output"}, {"path", "/meters/rf/out"}}));
    host.answer("/meters/rf/out/power", MeterResources::meter("/meters/rf/out/power", 4990.5));
  }

  web::HttpResponsePtr get(const std::string& query) {
    return call(host, web::Get, "/1/api/meters/collections", query, "", "client");
  }
};

TEST_F(GetMeterCollectionsTest, AnswersTheCollectionWithItsGroupsAndMetersAsJson) {
  const web::HttpResponsePtr resp = get("path=/meters/rf/list");
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->contentType(), web::CT_APPLICATION_JSON);
  EXPECT_EQ(
      resp->body(),
      R"({"path":"/meters/rf/list","label":"RF output","groups":[{"guid":"G-OUT",)"
      R"("path":"/meters/rf/out","label":"Output","meters":[{"guid":"guid-of-/meters/rf/out/power",)"
      R"("path":"/meters/rf/out/power","value":{"values":{"value":{"doubleValue":4990.5,)"
      R"("type":"DOUBLE"}}},"units":"W","min":0,"max":6000,"label":"Forward power",)"
      R"("digitsToDisplay":1,"device":{"guid":"amplifier3","name":"amplifier"}}]}]})");
}

TEST_F(GetMeterCollectionsTest, EveryReadIsUnderTheClientsSessionAndCountsAsActivity) {
  get("path=/meters/rf/list");
  const auto actions = host.actions();
  ASSERT_EQ(actions.size(), 3u);
  for (const tavelabi::ResourceAction& action : actions) {
    EXPECT_EQ(action.sessionId, "client");
    EXPECT_EQ(MeterResources::flagOf(action), 0) << action.path;
  }
}

TEST_F(GetMeterCollectionsTest, APercentEncodedPathReachesTheHostDecoded) {
  EXPECT_EQ(get("path=%2Fmeters%2Frf%2Flist")->statusCode(), web::k200OK);
  EXPECT_EQ(host.actions().at(0).path, "/meters/rf/list");
}

TEST_F(GetMeterCollectionsTest, AMissingOrEmptyPathThrowsWithoutAskingTheHost) {
  for (const std::string query : {"", "path=", "Path=/meters/rf/list", "x=1"}) {
    try {
      get(query);
      FAIL() << "no exception for " << query;
    } catch (const RequestMissingQueryParameter& error) {
      EXPECT_STREQ(error.what(), "Request missing query parameter: path.");
    }
  }
  EXPECT_TRUE(host.actions().empty());
}

TEST_F(GetMeterCollectionsTest, ACollectionOfEmptyGroupsIsAnsweredWithItsGroups) {
  host.answer("/meters/spare/list",
              MeterResources::listing({"/meters/spare/a"}, {{"label", "Spare"}}));
  host.answer("/meters/spare/a", MeterResources::listing({}, {{"label", "A"}}));
  const web::HttpResponsePtr resp = get("path=/meters/spare/list");
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->body(), R"({"label":"Spare","groups":[{"label":"A"}]})");
}

// ---- through the frame ----

class GetMeterCollectionsFrameTest : public GetMeterCollectionsTest {
 protected:
  void SetUp() override { test::installHost(&host, &info); }

  web::HttpResponsePtr frame(const std::string& query) {
    return test::throughFrame(handler,
                              test::makeRequest(web::Get, "/1/api/meters/collections", query));
  }
  test::LogCapture log{info.getLoggerId()};
};

TEST_F(GetMeterCollectionsFrameTest, AnUnknownCollectionIs500WithTheHostsText) {
  host.fail("/meters/none/list", [] {
    throw tavelabi::NonExistentResourcePathException("No resource at /meters/none/list");
  });
  const web::HttpResponsePtr resp = frame("path=/meters/none/list");
  EXPECT_EQ(resp->statusCode(), 500);
  EXPECT_NE(resp->body().find("No resource at /meters/none/list"), std::string::npos);
}

TEST_F(GetMeterCollectionsFrameTest, AnUnreadableGroupIs500) {
  host.answer("/meters/rf/list", MeterResources::listing({"/meters/rf/out", "/meters/rf/gone"}));
  host.fail("/meters/rf/gone", [] {
    throw tavelabi::NonExistentResourcePathException("No resource at /meters/rf/gone");
  });
  const web::HttpResponsePtr resp = frame("path=/meters/rf/list");
  EXPECT_EQ(resp->statusCode(), 500);
  EXPECT_NE(resp->body().find("No resource at /meters/rf/gone"), std::string::npos);
}

TEST_F(GetMeterCollectionsFrameTest, AnUnreadableMeterStill200WithAnEmptyMeterInItsPlace) {
  host.answer("/meters/rf/out", MeterResources::listing({"/meters/rf/out/gone"}));
  host.fail("/meters/rf/out/gone", [] {
    throw tavelabi::NonExistentResourcePathException("No resource at /meters/rf/out/gone");
  });
  const web::HttpResponsePtr resp = frame("path=/meters/rf/list");
  EXPECT_EQ(resp->statusCode(), 200);
  EXPECT_EQ(
      resp->body(),
      R"({"path":"/meters/rf/list","label":"RF output","groups":[{"meters":[{"device":{}}]}]})");
  EXPECT_EQ(log.count(el::Level::Error, "No resource at /meters/rf/out/gone"), 1u);
}

TEST_F(GetMeterCollectionsFrameTest, AMissingPathIs500NamingIt) {
  const web::HttpResponsePtr resp = frame("");
  EXPECT_EQ(resp->statusCode(), 500);
  EXPECT_NE(resp->body().find("Request missing query parameter: path."), std::string::npos);
}

TEST_F(GetMeterCollectionsFrameTest, ADeadSessionIs440) {
  host.fail("/meters/rf/list",
            [] { throw tavelabi::NonExistentSessionException("Session client does not exist"); });
  EXPECT_EQ(frame("path=/meters/rf/list")->statusCode(), 440);
}

}  // namespace
}  // namespace halvor::kelo
