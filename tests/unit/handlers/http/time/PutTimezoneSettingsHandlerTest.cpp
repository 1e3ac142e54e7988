#include <gtest/gtest.h>

#include <string>

#include "kelo/handlers/http/time/PutTimezoneSettingsHandler.h"
#include "support/HandlerTest.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;

class PutTimezoneSettingsHandlerTest : public test::HandlerTest<PutTimezoneSettingsHandler> {};

TEST_F(PutTimezoneSettingsHandlerTest, WritesTheNameAndAnswersTheZoneReadBack) {
  host.answer(CCRUD::Update, "/time/timezone", Resource());
  host.answer(CCRUD::Read, "/time/timezone", Resource(ResourceValue("Asia/Tokyo")));
  const web::HttpResponsePtr resp = call(host, web::Put, "/1/api/time_settings/timezone", "",
                                         R"({"timezone":"Asia/Tokyo","description":"x"})", "s1");
  EXPECT_EQ(host.actions()[0].resource.values.at("set_value").getStringValue(), "Asia/Tokyo");
  EXPECT_EQ(resp->statusCode(), 200);
  EXPECT_EQ(std::string(resp->body()), R"({"timezone":"Asia/Tokyo"})");
}

TEST_F(PutTimezoneSettingsHandlerTest, AnUnknownZoneIsTheHostsTextWith500) {
  host.answer(CCRUD::Update, "/time/timezone",
              Resource("errorMessage", ResourceValue("Unknown time zone: Mars/Base")));
  const web::HttpResponsePtr resp = call(host, web::Put, "/1/api/time_settings/timezone", "",
                                         R"({"timezone":"Mars/Base"})", "s1");
  EXPECT_EQ(resp->statusCode(), 500);
  EXPECT_EQ(std::string(resp->body()), "Unknown time zone: Mars/Base");
  EXPECT_EQ(host.actions().size(), 1u);
}

}  // namespace
}  // namespace halvor::kelo
