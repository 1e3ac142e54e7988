#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "kelo/handlers/http/time/GetTimeZoneMapHandler.h"
#include "support/HandlerTest.h"

namespace halvor::kelo {
namespace {

using tavelabi::Resource;
using tavelabi::ResourceValue;
using Map = tavelabi::ResourceValue::Map;

ResourceValue zone(const std::string& name, const std::string& description) {
  return ResourceValue(
      Map{{"timezone", ResourceValue(name)}, {"description", ResourceValue(description)}});
}

class GetTimeZoneMapHandlerTest : public test::HandlerTest<GetTimeZoneMapHandler> {};

TEST_F(GetTimeZoneMapHandlerTest, RegionsInKeyOrderEachWithItsZones) {
  Map map{{"Europe", ResourceValue(Map{{"a", zone("Europe/Berlin", "Berlin")},
                                       {"b", zone("Europe/Paris", "Paris")}})},
          {"Asia", ResourceValue(Map{{"a", zone("Asia/Tokyo", "Tokyo")}})}};
  host.answer("/time/tzmap", Resource(ResourceValue(map)));
  const web::HttpResponsePtr resp =
      call(host, web::Get, "/1/api/time_settings/tzmap", "", "", "s1");
  EXPECT_EQ(resp->statusCode(), 200);
  EXPECT_EQ(std::string(resp->body()),
            R"({"regionTimezones":[{"region":"Asia","timezones":[{"timezone":"Asia/Tokyo",)"
            R"("description":"Tokyo"}]},{"region":"Europe","timezones":[{"timezone":)"
            R"("Europe/Berlin","description":"Berlin"},{"timezone":"Europe/Paris",)"
            R"("description":"Paris"}]}]})");
}

TEST_F(GetTimeZoneMapHandlerTest, AZoneWithoutDescriptionFailsWithMapAt) {
  Map map{
      {"Asia", ResourceValue(Map{{"a", ResourceValue(Map{{"timezone", ResourceValue("x")}})}})}};
  host.answer("/time/tzmap", Resource(ResourceValue(map)));
  EXPECT_THROW(call(host, web::Get, "/1/api/time_settings/tzmap", "", "", "s1"), std::out_of_range);
}

}  // namespace
}  // namespace halvor::kelo
