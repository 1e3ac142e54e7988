#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "kelo/Exceptions.h"
#include "kelo/common/EdUrlParser.h"
#include "kelo/common/JsonOptions.h"
#include "kelo/handlers/http/events/EventEndpointHelperClass.h"
#include "support/Requests.h"

namespace halvor::kelo {
namespace {

using Helper = EventEndpointHelperClass;
using QueryMap = EventEndpointHelperClass::QueryMap;
using protobuf::LoggedEvent;
using protobuf::PagedEvents;
using tavelabi::ResourceValue;
using test::makeRequest;

web::HttpRequestPtr pagedRequest(const std::string& query, const std::string& host = "tx1:8080") {
  web::HttpRequestPtr req = makeRequest(web::Get, "/1/api/events/paged", query);
  if (!host.empty()) req->addHeader("Host", host);
  return req;
}

// The query text of the map in the map's own iteration order, as the links carry it.
std::string inMapOrder(const QueryMap& query) {
  std::string text;
  for (const auto& [key, value] : query) text += key + "=" + value + "&";
  return text;
}

// ---- getQueryParameter ----

TEST(EventEndpointHelperClassTest, QueryParameterIsTheValueOrEmpty) {
  QueryMap query{{"page", "2"}, {"ordering", "-name"}};
  EXPECT_EQ(Helper::getQueryParameter(query, "ordering"), "-name");
  EXPECT_EQ(Helper::getQueryParameter(query, "type"), "");
}

// ---- getRequestedOrdering ----

TEST(EventEndpointHelperClassTest, NoOrderingIsTimeDescending) {
  QueryMap query{{"page", "1"}};
  const Helper::Ordering ordering = Helper::getRequestedOrdering(query);
  EXPECT_EQ(ordering.field, "time");
  EXPECT_TRUE(ordering.descending);
}

TEST(EventEndpointHelperClassTest, LeadingMinusIsDescendingOtherwiseAscending) {
  QueryMap descending{{"ordering", "-name"}};
  EXPECT_EQ(Helper::getRequestedOrdering(descending).field, "name");
  EXPECT_TRUE(Helper::getRequestedOrdering(descending).descending);
  QueryMap ascending{{"ordering", "name"}};
  EXPECT_EQ(Helper::getRequestedOrdering(ascending).field, "name");
  EXPECT_FALSE(Helper::getRequestedOrdering(ascending).descending);
}

TEST(EventEndpointHelperClassTest, UnknownFieldIsTimeDescendingEitherWay) {
  for (const std::string text : {"foo", "-foo", "-", "Name", "-time-"}) {
    QueryMap query{{"ordering", text}};
    const Helper::Ordering ordering = Helper::getRequestedOrdering(query);
    EXPECT_EQ(ordering.field, "time") << text;
    EXPECT_TRUE(ordering.descending) << text;
  }
}

TEST(EventEndpointHelperClassTest, EveryAllowedFieldIsTakenBothWays) {
  for (const std::string field :
       {"device", "time", "name", "description", "alarmSeverity", "value", "type", "eventId"}) {
    QueryMap ascending{{"ordering", field}};
    EXPECT_EQ(Helper::getRequestedOrdering(ascending).field, field);
    EXPECT_FALSE(Helper::getRequestedOrdering(ascending).descending) << field;
    QueryMap descending{{"ordering", "-" + field}};
    EXPECT_EQ(Helper::getRequestedOrdering(descending).field, field);
    EXPECT_TRUE(Helper::getRequestedOrdering(descending).descending) << field;
  }
}

// ---- getQueryParameterUint ----

TEST(EventEndpointHelperClassTest, NumbersAreConvertedInBaseTen) {
  QueryMap query{{"page", "12"}, {"page_size", "015"}, {"type", "3"}};
  EXPECT_EQ(Helper::getQueryParameterUint(query, "page"), 12U);
  EXPECT_EQ(Helper::getQueryParameterUint(query, "page_size"), 15U);
  EXPECT_EQ(Helper::getQueryParameterUint(query, "type"), 3U);
}

TEST(EventEndpointHelperClassTest, MissingPageOrPageSizeIsAMissingParameter) {
  QueryMap query{{"type", "1"}};
  try {
    Helper::getQueryParameterUint(query, "page");
    FAIL() << "no exception";
  } catch (const RequestMissingQueryParameter& error) {
    EXPECT_STREQ(error.what(), "Request missing query parameter: page.");
  }
  try {
    Helper::getQueryParameterUint(query, "page_size");
    FAIL() << "no exception";
  } catch (const RequestMissingQueryParameter& error) {
    EXPECT_STREQ(error.what(), "Request missing query parameter: page_size.");
  }
}

TEST(EventEndpointHelperClassTest, NonNumericPageIsAMissingParameter) {
  QueryMap query{{"page", "abc"}, {"page_size", "x1"}};
  EXPECT_THROW(Helper::getQueryParameterUint(query, "page"), RequestMissingQueryParameter);
  EXPECT_THROW(Helper::getQueryParameterUint(query, "page_size"), RequestMissingQueryParameter);
}

TEST(EventEndpointHelperClassTest, MissingOrNonNumericTypeIsZero) {
  QueryMap none{{"page", "1"}};
  EXPECT_EQ(Helper::getQueryParameterUint(none, "type"), 0U);
  QueryMap text{{"type", "alarm"}};
  EXPECT_EQ(Helper::getQueryParameterUint(text, "type"), 0U);
}

TEST(EventEndpointHelperClassTest, ZeroPageSizeIsFifteenButZeroPageStaysZero) {
  QueryMap query{{"page", "0"}, {"page_size", "0"}, {"type", "0"}};
  EXPECT_EQ(Helper::getQueryParameterUint(query, "page_size"), 15U);
  EXPECT_EQ(Helper::getQueryParameterUint(query, "page"), 0U);
  EXPECT_EQ(Helper::getQueryParameterUint(query, "type"), 0U);
}

TEST(EventEndpointHelperClassTest, NumberBeyondIntIsOutOfRangeAndNotCaught) {
  QueryMap query{{"page", "2147483648"}, {"type", "99999999999"}};
  EXPECT_THROW(Helper::getQueryParameterUint(query, "page"), std::out_of_range);
  EXPECT_THROW(Helper::getQueryParameterUint(query, "type"), std::out_of_range);
}

TEST(EventEndpointHelperClassTest, NegativeNumberComesBackAsLargeUnsigned) {
  QueryMap query{{"page", "-1"}, {"page_size", "-15"}};
  EXPECT_EQ(Helper::getQueryParameterUint(query, "page"), 4294967295U);
  EXPECT_EQ(Helper::getQueryParameterUint(query, "page_size"), 4294967281U);
}

TEST(EventEndpointHelperClassTest, TrailingTextAfterTheNumberIsIgnoredAsTheConversionDoes) {
  QueryMap query{{"page", "3abc"}};
  EXPECT_EQ(Helper::getQueryParameterUint(query, "page"), 3U);
}

// ---- formRequestUriWithPage ----

TEST(EventEndpointHelperClassTest, LinkIsHostPathAndQueryEndingInAmpersand) {
  QueryMap query{{"page", "1"}};
  EXPECT_EQ(Helper::formRequestUriWithPage(pagedRequest("page=1"), 2, query),
            "tx1:8080/1/api/events/paged?page=2&");
}

TEST(EventEndpointHelperClassTest, LinkCarriesEveryEntryInTheMapsOrder) {
  QueryMap query{{"page", "1"}, {"page_size", "15"}, {"type", "2"}, {"ordering", "-name"}};
  const std::string link = Helper::formRequestUriWithPage(pagedRequest(""), 3, query);
  std::string expected = "tx1:8080/1/api/events/paged?" + inMapOrder(query);
  expected.replace(expected.find("page=1"), 6, "page=3");
  EXPECT_EQ(link, expected);
  EXPECT_NE(link.find("page_size=15&"), std::string::npos);
  EXPECT_NE(link.find("type=2&"), std::string::npos);
  EXPECT_NE(link.find("ordering=-name&"), std::string::npos);
  EXPECT_EQ(link.back(), '&');
}

TEST(EventEndpointHelperClassTest, LinkWithoutHostHeaderStartsWithThePath) {
  QueryMap query{{"page", "4"}};
  EXPECT_EQ(Helper::formRequestUriWithPage(pagedRequest("page=4", ""), 5, query),
            "/1/api/events/paged?page=5&");
}

TEST(EventEndpointHelperClassTest, HostHeaderIsLookedUpWithExactlyThatCase) {
  web::HttpRequestPtr req = makeRequest(web::Get, "/1/api/events/paged", "page=1");
  req->addHeader("host", "lower.example");
  QueryMap query{{"page", "1"}};
  EXPECT_EQ(Helper::formRequestUriWithPage(req, 2, query), "/1/api/events/paged?page=2&");
}

TEST(EventEndpointHelperClassTest, EveryPageNumberMatchInTheLinkIsReplaced) {
  QueryMap query{{"page", "1"}, {"frontpage", "77"}};
  const std::string link = Helper::formRequestUriWithPage(pagedRequest(""), 2, query);
  EXPECT_NE(link.find("frontpage=2&"), std::string::npos) << link;
  EXPECT_EQ(link.find("page=1"), std::string::npos) << link;
  EXPECT_EQ(link.find("77"), std::string::npos) << link;
}

TEST(EventEndpointHelperClassTest, LinkValuesStayPercentCoded) {
  QueryMap query{{"page", "1"}, {"ordering", "%2Dname"}};
  const std::string link = Helper::formRequestUriWithPage(pagedRequest(""), 2, query);
  EXPECT_NE(link.find("ordering=%2Dname&"), std::string::npos) << link;
}

TEST(EventEndpointHelperClassTest, PageIsPrintedUnsigned) {
  QueryMap query{{"page", "1"}};
  EXPECT_EQ(Helper::formRequestUriWithPage(pagedRequest(""), 4294967295U, query),
            "tx1:8080/1/api/events/paged?page=4294967295&");
}

// ---- buildLoggedEventPbVector ----

ResourceValue fullRecord() {
  ResourceValue::Map record;
  record["severity"] = ResourceValue("REDUCED_POWER");
  record["deviceName"] = ResourceValue("amplifier");
  record["deviceId"] = ResourceValue("3");
  record["seconds"] = ResourceValue(1763856000.75);
  record["hundredths"] = ResourceValue(50);
  record["eventType"] = ResourceValue("POWER_CHANGE");
  record["description"] = ResourceValue("Output power set to 850 W");
  record["eventLogId"] = ResourceValue(41);
  record["eventName"] = ResourceValue("Power change");
  record["value"] = ResourceValue("850 W");
  return ResourceValue(record);
}

TEST(EventEndpointHelperClassTest, RecordBecomesALoggedEventFieldByField) {
  std::vector<ResourceValue> records{fullRecord()};
  const std::vector<LoggedEvent> events = Helper::buildLoggedEventPbVector(records);
  ASSERT_EQ(events.size(), 1U);
  const LoggedEvent& event = events[0];
  EXPECT_EQ(event.severity(), protobuf::REDUCED_POWER);
  EXPECT_EQ(event.device().name().value(), "amplifier");
  EXPECT_EQ(event.device().guid().value(), "3");
  EXPECT_EQ(event.time().seconds(), 1763856000);
  EXPECT_EQ(event.time().nanos(), 500000000);
  EXPECT_EQ(event.eventtype(), protobuf::LoggedEvent::POWER_CHANGE);
  EXPECT_EQ(event.description().value(), "Output power set to 850 W");
  EXPECT_EQ(event.eventlogid().value(), 41);
  EXPECT_EQ(event.eventname().value(), "Power change");
  EXPECT_EQ(event.value().value(), "850 W");
  EXPECT_EQ(JsonOptions::toJson(event),
            R"({"severity":"REDUCED_POWER","device":{"guid":"3","name":"amplifier"},)"
            R"("time":"2025-11-23T00:00:00.500Z","eventType":"POWER_CHANGE",)"
            R"("description":"Output power set to 850 W","eventLogId":41,)"
            R"("eventName":"Power change","value":"850 W"})");
}

TEST(EventEndpointHelperClassTest, MissingKeysStayUnsetButTheDeviceIsAlwaysThere) {
  std::vector<ResourceValue> records{ResourceValue(ResourceValue::Map{})};
  const LoggedEvent event = Helper::buildLoggedEventPbVector(records).at(0);
  EXPECT_TRUE(event.has_device());
  EXPECT_FALSE(event.device().has_name());
  EXPECT_FALSE(event.device().has_guid());
  EXPECT_FALSE(event.has_time());
  EXPECT_FALSE(event.has_description());
  EXPECT_FALSE(event.has_eventlogid());
  EXPECT_FALSE(event.has_eventname());
  EXPECT_FALSE(event.has_value());
  EXPECT_EQ(JsonOptions::toJson(event), R"({"device":{}})");
}

TEST(EventEndpointHelperClassTest, DeviceNameAloneSetsOnlyTheName) {
  std::vector<ResourceValue> records{
      ResourceValue(ResourceValue::Map{{"deviceName", ResourceValue("fan")}})};
  const LoggedEvent event = Helper::buildLoggedEventPbVector(records).at(0);
  EXPECT_EQ(event.device().name().value(), "fan");
  EXPECT_FALSE(event.device().has_guid());
}

TEST(EventEndpointHelperClassTest, UnknownSeverityAndTypeNamesAreValueZero) {
  std::vector<ResourceValue> records{ResourceValue(ResourceValue::Map{
      {"severity", ResourceValue("SEVERE")}, {"eventType", ResourceValue("REBOOT")}})};
  const LoggedEvent event = Helper::buildLoggedEventPbVector(records).at(0);
  EXPECT_EQ(event.severity(), protobuf::CRITICAL);
  EXPECT_EQ(event.eventtype(), protobuf::LoggedEvent::UNSPECIFIED);
}

TEST(EventEndpointHelperClassTest, SecondsAreTruncatedAndHundredthsScaled) {
  std::vector<ResourceValue> records{
      ResourceValue(ResourceValue::Map{{"seconds", ResourceValue(99.99)}}),
      ResourceValue(ResourceValue::Map{{"hundredths", ResourceValue(7)}})};
  const std::vector<LoggedEvent> events = Helper::buildLoggedEventPbVector(records);
  EXPECT_EQ(events[0].time().seconds(), 99);
  EXPECT_EQ(events[0].time().nanos(), 0);
  EXPECT_EQ(events[1].time().seconds(), 0);
  EXPECT_EQ(events[1].time().nanos(), 70000000);
}

TEST(EventEndpointHelperClassTest, RecordsKeepTheHostsOrder) {
  std::vector<ResourceValue> records;
  for (int id : {5, 3, 9}) {
    records.emplace_back(ResourceValue::Map{{"eventLogId", ResourceValue(id)}});
  }
  const std::vector<LoggedEvent> events = Helper::buildLoggedEventPbVector(records);
  ASSERT_EQ(events.size(), 3U);
  EXPECT_EQ(events[0].eventlogid().value(), 5);
  EXPECT_EQ(events[1].eventlogid().value(), 3);
  EXPECT_EQ(events[2].eventlogid().value(), 9);
}

TEST(EventEndpointHelperClassTest, RecordThatIsNotAMapOrHasWrongTypesThrows) {
  std::vector<ResourceValue> notMap{ResourceValue("event")};
  EXPECT_ANY_THROW(Helper::buildLoggedEventPbVector(notMap));
  std::vector<ResourceValue> seconds{
      ResourceValue(ResourceValue::Map{{"seconds", ResourceValue("yesterday")}})};
  EXPECT_ANY_THROW(Helper::buildLoggedEventPbVector(seconds));
  std::vector<ResourceValue> notFinite{
      ResourceValue(ResourceValue::Map{{"seconds", ResourceValue(1e300)}})};
  EXPECT_THROW(Helper::buildLoggedEventPbVector(notFinite), std::out_of_range);
}

// ---- buildPagedEventPb ----

class PagingTest : public ::testing::Test {
 protected:
  std::shared_ptr<PagedEvents> paged(unsigned int page, unsigned int pageSize, std::int32_t total,
                                     const std::string& queryText) {
    query.clear();
    split(queryText);
    return Helper::buildPagedEventPb(events, page, pageSize, pagedRequest(queryText), query, total,
                                     1763856000);
  }
  // The query as the handler splits it.
  void split(const std::string& text) { EdUrlParser::parseKeyValueMap(&query, text, true); }
  std::string link(unsigned int page) const {
    return Helper::formRequestUriWithPage(pagedRequest(""), page, query);
  }

  std::vector<LoggedEvent> events;
  QueryMap query;
};

TEST_F(PagingTest, FirstOfTwoPagesHasANextLinkOnly) {
  const auto result = paged(1, 15, 30, "page=1&page_size=15");
  ASSERT_TRUE(result->has_next());
  EXPECT_EQ(result->next().value(), link(2));
  EXPECT_NE(result->next().value().find("page=2&"), std::string::npos);
  EXPECT_FALSE(result->has_previous());
}

TEST_F(PagingTest, SecondOfTwoPagesHasAPreviousLinkOnly) {
  const auto result = paged(2, 15, 30, "page=2&page_size=15");
  ASSERT_TRUE(result->has_previous());
  EXPECT_EQ(result->previous().value(), link(1));
  EXPECT_NE(result->previous().value().find("page=1&"), std::string::npos);
  EXPECT_FALSE(result->has_next());
}

TEST_F(PagingTest, PagePastTheEndLinksBackToTheLastIndex) {
  const auto result = paged(9, 15, 30, "page=9&page_size=15");
  ASSERT_TRUE(result->has_previous());
  EXPECT_EQ(result->previous().value(), link(1));
  EXPECT_FALSE(result->has_next());
}

TEST_F(PagingTest, MiddlePageHasBothLinks) {
  const auto result = paged(2, 15, 45, "page=2&page_size=15");
  EXPECT_EQ(result->previous().value(), link(1));
  EXPECT_EQ(result->next().value(), link(3));
}

TEST_F(PagingTest, PageZeroHasNoLinksAndTheEventsAsGiven) {
  for (int id : {8, 2, 5}) {
    LoggedEvent event;
    event.mutable_eventlogid()->set_value(id);
    events.push_back(event);
  }
  const auto result = paged(0, 15, 30, "page=0&page_size=15");
  EXPECT_FALSE(result->has_next());
  EXPECT_FALSE(result->has_previous());
  ASSERT_EQ(result->events_size(), 3);
  EXPECT_EQ(result->events(0).eventlogid().value(), 8);
  EXPECT_EQ(result->events(1).eventlogid().value(), 2);
  EXPECT_EQ(result->events(2).eventlogid().value(), 5);
}

TEST_F(PagingTest, NoEventsWithPageSizeFifteenHasNoLinks) {
  const auto result = paged(1, 15, 0, "page=1&page_size=15");
  EXPECT_FALSE(result->has_next());
  EXPECT_FALSE(result->has_previous());
  EXPECT_EQ(result->count().value(), 0);
  EXPECT_TRUE(result->has_count());
}

TEST_F(PagingTest, NoEventsWithPageSizeOneLinksToPage4294967295) {
  const auto result = paged(1, 1, 0, "page=1&page_size=1");
  EXPECT_FALSE(result->has_next());
  ASSERT_TRUE(result->has_previous());
  EXPECT_EQ(result->previous().value(), link(4294967295U));
  EXPECT_NE(result->previous().value().find("page=4294967295&"), std::string::npos);
}

TEST_F(PagingTest, CountAndTimestampComeFromTheAnswer) {
  const auto result = paged(1, 15, 30, "page=1&page_size=15");
  EXPECT_EQ(result->count().value(), 30);
  EXPECT_EQ(result->timestamp().seconds(), 1763856000);
  EXPECT_EQ(result->timestamp().nanos(), 0);
}

TEST_F(PagingTest, LastPageOfAnUnevenCountHasNoNext) {
  const auto third = paged(3, 15, 31, "page=3&page_size=15");
  EXPECT_FALSE(third->has_next());
  EXPECT_EQ(third->previous().value(), link(2));
  const auto second = paged(2, 15, 31, "page=2&page_size=15");
  EXPECT_EQ(second->next().value(), link(3));
}

TEST_F(PagingTest, TheOverloadWithoutCountPagesWithTheLatestAnswer) {
  Helper::totalNumberOfEvents.store(30);
  Helper::timeStamp.store(1700000000);
  split("page=1&page_size=15");
  const auto result = Helper::buildPagedEventPb(events, 1, 15, pagedRequest(""), query);
  EXPECT_EQ(result->count().value(), 30);
  EXPECT_EQ(result->timestamp().seconds(), 1700000000);
  EXPECT_EQ(result->next().value(), link(2));
  EXPECT_FALSE(result->has_previous());
}

}  // namespace
}  // namespace halvor::kelo
