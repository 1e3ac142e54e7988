#include <gtest/gtest.h>
#include <json/value.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "kelo/handlers/http/events/GenerateCsvHandler.h"
#include "support/HandlerTest.h"
#include "support/SimHost.h"
#include "tavelabi/Exceptions.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;
using test::SimHost;

constexpr const char* kCommand = "/command/eventlog/generateCsv";

class GenerateCsvHandlerTest : public test::HandlerTest<GenerateCsvHandler> {
 protected:
  web::HttpResponsePtr generate(tavelabi::ITavel& tavel, const std::string& query,
                                const std::string& sessionId = "s1") {
    return call(tavel, web::Post, "/1/api/events/generateCsv", query, "", sessionId);
  }
  const Resource& sent() const { return host.onlyAction().resource; }
};

TEST_F(GenerateCsvHandlerTest, SendsOrderingAndTypeAndAnswersStatusOnly) {
  host.answer(kCommand, Resource("value", ResourceValue("/files/eventlog.csv")));
  const web::HttpResponsePtr resp = generate(host, "type=2&ordering=-device");
  const tavelabi::ResourceAction& action = host.onlyAction();
  EXPECT_EQ(action.action, CCRUD::Command);
  EXPECT_EQ(action.path, kCommand);
  Resource expected;
  expected.addValue("displayOrder", ResourceValue("device"));
  expected.addValue("descending", ResourceValue(true));
  expected.addValue("eventType", ResourceValue(2));
  EXPECT_EQ(action.resource.values, expected.values);
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->contentType(), web::CT_NONE);
  EXPECT_EQ(resp->body(), "");
}

TEST_F(GenerateCsvHandlerTest, WithoutQueryItIsEveryTypeByTimeDescending) {
  host.answer(kCommand, Resource());
  generate(host, "");
  EXPECT_EQ(sent().values.at("displayOrder").getStringValue(), "time");
  EXPECT_TRUE(sent().values.at("descending").getBoolValue());
  EXPECT_EQ(sent().values.at("eventType").getIntValue(), 0);
  EXPECT_EQ(sent().values.size(), 3U);
}

TEST_F(GenerateCsvHandlerTest, PagingIsNotNeededAndNotSent) {
  host.answer(kCommand, Resource());
  generate(host, "page=abc&ordering=eventId&type=x");
  EXPECT_EQ(sent().values.count("page"), 0U);
  EXPECT_EQ(sent().values.at("displayOrder").getStringValue(), "eventId");
  EXPECT_FALSE(sent().values.at("descending").getBoolValue());
  EXPECT_EQ(sent().values.at("eventType").getIntValue(), 0);
}

TEST_F(GenerateCsvHandlerTest, TypeTooLargeForIntIsOutOfRange) {
  EXPECT_THROW(generate(host, "type=4294967296"), std::out_of_range);
  EXPECT_TRUE(host.actions().empty());
}

// The simulated host writes the file; a viewer may export the log too.
TEST_F(GenerateCsvHandlerTest, SimulatedHostWritesTheFilteredLog) {
  const std::filesystem::path directory =
      std::filesystem::temp_directory_path() / ("kelo-csv-test-" + std::to_string(::getpid()));
  std::filesystem::remove_all(directory);
  SimHost sim;
  Json::Value section;
  section["csvDirectory"] = directory.string();
  for (int id = 1; id <= 4; ++id) {
    Json::Value event;
    event["eventLogId"] = id;
    event["seconds"] = 1763856000 + id;
    event["eventType"] = id % 2 == 0 ? "POWER_CHANGE" : "RF_STATE_CHANGE";
    event["description"] = "event " + std::to_string(id);
    section["events"].append(event);
  }
  sim::Fixture fixture;
  fixture.source = "test";
  fixture.sections.emplace_back("eventlog", section);
  sim.tavel.applyFixture(fixture);

  const web::HttpResponsePtr resp =
      generate(sim.tavel, "type=2&ordering=-eventId", SimHost::kViewerSession);
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  std::ifstream file(directory / "eventlog.csv");
  ASSERT_TRUE(file.good());
  std::stringstream text;
  text << file.rdbuf();
  EXPECT_EQ(text.str(),
            "eventLogId,time,deviceName,deviceId,eventType,eventName,severity,description,value\r\n"
            "4,2025-11-23T00:00:04.00Z,,,POWER_CHANGE,,,event 4,\r\n"
            "2,2025-11-23T00:00:02.00Z,,,POWER_CHANGE,,,event 2,\r\n");
  std::filesystem::remove_all(directory);
}

}  // namespace
}  // namespace halvor::kelo
