#include <gtest/gtest.h>

#include <string>

#include "kelo/Exceptions.h"
#include "kelo/handlers/http/alarms/GetAlarm.h"
#include "support/HandlerTest.h"
#include "tavelabi/Exceptions.h"
#include "unit/handlers/http/alarms/AlarmTestResources.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;
using test::fullAlarm;

class GetAlarmTest : public test::HandlerTest<GetAlarm> {
 protected:
  web::HttpResponsePtr get(const std::string& query, const std::string& sessionId = "client-1") {
    return call(host, web::Get, "/1/api/alarms/alarm", query, "", sessionId);
  }
};

TEST_F(GetAlarmTest, ReadsTheDecodedPathAndAnswersWithDefaultsPrinted) {
  host.answer("/alarms/fan/2/stalled", fullAlarm("/alarms/fan/2/stalled", false, "fan", "2"));
  const web::HttpResponsePtr resp = get("path=%2Falarms%2Ffan%2F2%2Fstalled", "client-4");
  const tavelabi::ResourceAction& read = host.onlyAction();
  EXPECT_EQ(read.action, CCRUD::Read);
  EXPECT_EQ(read.path, "/alarms/fan/2/stalled");
  EXPECT_EQ(read.sessionId, "client-4");
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->contentType(), web::CT_APPLICATION_JSON);
  EXPECT_EQ(resp->body(),
            R"({"meters":[],"device":{"guid":"fan-2","name":"fan"},"severity":"REDUCED_POWER",)"
            R"("path":"/alarms/fan/2/stalled","active":false,)"
            R"("description":"Heat sink above 80 C","name":"Over temperature",)"
            R"("time":"2026-01-31T12:34:56Z"})");
}

TEST_F(GetAlarmTest, AnAlarmWithoutKeysPrintsItsDefaults) {
  host.answer("/alarms/bare", Resource());
  EXPECT_EQ(get("path=/alarms/bare")->body(), R"({"meters":[],"device":{},"severity":"CRITICAL"})");
}

TEST_F(GetAlarmTest, MissingOrEmptyPathThrowsWithoutAskingTheHost) {
  for (const std::string query : {"", "x=1", "path=", "Path=/alarms/a"}) {
    try {
      get(query);
      ADD_FAILURE() << "no exception for query \"" << query << "\"";
    } catch (const RequestMissingQueryParameter& error) {
      EXPECT_STREQ(error.what(), "Request missing query parameter: path.") << query;
    }
  }
  EXPECT_TRUE(host.actions().empty());
}

TEST_F(GetAlarmTest, AnUnknownPathPassesTheHostsFailureThrough) {
  host.fail("/alarms/nowhere", [] {
    throw tavelabi::NonExistentResourcePathException("No resource at /alarms/nowhere");
  });
  EXPECT_THROW(get("path=/alarms/nowhere"), tavelabi::NonExistentResourcePathException);
}

TEST_F(GetAlarmTest, DeviceIdWithoutDeviceNameFailsWithMapAt) {
  Resource resource;
  resource.values["deviceId"] = ResourceValue("3");
  host.answer("/alarms/a", resource);
  try {
    get("path=/alarms/a");
    ADD_FAILURE() << "no exception";
  } catch (const std::out_of_range& error) {
    EXPECT_STREQ(error.what(), "map::at");
  }
}

}  // namespace
}  // namespace halvor::kelo
