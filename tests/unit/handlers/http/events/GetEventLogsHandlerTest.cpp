#include <gtest/gtest.h>

#include <ctime>
#include <stdexcept>
#include <string>

#include "halvor/protobuf/Monitoring.pb.h"
#include "kelo/Exceptions.h"
#include "kelo/common/JsonOptions.h"
#include "kelo/handlers/http/events/EventEndpointHelperClass.h"
#include "kelo/handlers/http/events/GetEventLogsHandler.h"
#include "support/HandlerTest.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;
using test::installHost;
using test::makeRequest;
using test::throughFrame;

constexpr const char* kCommand = "/command/eventlog/getEvents";

ResourceValue record(int id, const std::string& type) {
  return ResourceValue(ResourceValue::Map{{"eventLogId", ResourceValue(id)},
                                          {"eventType", ResourceValue(type)},
                                          {"deviceName", ResourceValue("exciter")},
                                          {"deviceId", ResourceValue("1")},
                                          {"seconds", ResourceValue(1763856000.0 + id)},
                                          {"hundredths", ResourceValue(50)}});
}

Resource answerWith(const ResourceValue::List& records, int count) {
  ResourceValue list;
  list.setList(records);
  Resource answer("value", list);
  answer.addValue("count", ResourceValue(count));
  return answer;
}

protobuf::PagedEvents parsePaged(const std::string& body) {
  protobuf::PagedEvents paged;
  const auto status = JsonOptions::fromJson(body, paged);
  if (!status.ok()) throw std::runtime_error("not PagedEvents JSON: " + body);
  return paged;
}

class GetEventLogsHandlerTest : public test::HandlerTest<GetEventLogsHandler> {
 protected:
  web::HttpResponsePtr page(const std::string& query, const std::string& host = "tx1:8080") {
    web::HttpRequestPtr req = makeRequest(web::Get, "/1/api/events/paged", query);
    if (!host.empty()) req->addHeader("Host", host);
    web::HttpResponsePtr resp = web::HttpResponse::newHttpResponse();
    handler.processHttpRequest(req, resp, &this->host, &info, "s1");
    return resp;
  }
  const Resource& sent() const { return host.onlyAction().resource; }
};

TEST_F(GetEventLogsHandlerTest, SendsTheGetEventsCommandWithTheQuerysFiveValues) {
  host.answer(kCommand, answerWith({}, 0));
  page("page=2&page_size=20&type=5&ordering=-name");
  const tavelabi::ResourceAction& action = host.onlyAction();
  EXPECT_EQ(action.action, CCRUD::Command);
  EXPECT_EQ(action.path, kCommand);
  EXPECT_EQ(action.sessionId, "s1");
  Resource expected;
  expected.addValue("displayOrder", ResourceValue("name"));
  expected.addValue("descending", ResourceValue(true));
  expected.addValue("page", ResourceValue(2));
  expected.addValue("pageSize", ResourceValue(20));
  expected.addValue("eventType", ResourceValue(5));
  EXPECT_EQ(action.resource.values, expected.values);
}

TEST_F(GetEventLogsHandlerTest, DefaultsAreTimeDescendingAndTypeZero) {
  host.answer(kCommand, answerWith({}, 0));
  page("page=1&page_size=15");
  EXPECT_EQ(sent().values.at("displayOrder").getStringValue(), "time");
  EXPECT_TRUE(sent().values.at("descending").getBoolValue());
  EXPECT_EQ(sent().values.at("eventType").getIntValue(), 0);
  EXPECT_EQ(sent().values.at("eventType").getType(), tavelabi::ResourceValueType::INT32);
}

TEST_F(GetEventLogsHandlerTest, AscendingOrderingIsSentAsItIs) {
  host.answer(kCommand, answerWith({}, 0));
  page("page=1&page_size=15&ordering=device");
  EXPECT_EQ(sent().values.at("displayOrder").getStringValue(), "device");
  EXPECT_FALSE(sent().values.at("descending").getBoolValue());
}

TEST_F(GetEventLogsHandlerTest, UnknownOrderingIsSentAsTimeDescending) {
  host.answer(kCommand, answerWith({}, 0));
  page("page=1&page_size=15&ordering=foo");
  EXPECT_EQ(sent().values.at("displayOrder").getStringValue(), "time");
  EXPECT_TRUE(sent().values.at("descending").getBoolValue());
}

TEST_F(GetEventLogsHandlerTest, PageSizeZeroIsSentAsFifteen) {
  host.answer(kCommand, answerWith({}, 0));
  page("page=1&page_size=0");
  EXPECT_EQ(sent().values.at("pageSize").getIntValue(), 15);
}

TEST_F(GetEventLogsHandlerTest, NegativePageIsSentAsTheSameBitsAndItsLinkKeepsTheMinus) {
  host.answer(kCommand, answerWith({}, 30));
  const web::HttpResponsePtr resp = page("page=-1&page_size=15");
  EXPECT_EQ(sent().values.at("page").getIntValue(), -1);
  const protobuf::PagedEvents paged = parsePaged(std::string(resp->body()));
  // 4294967295 is past the last page, so there is a previous link (to the last index, 1); but
  // "page=-1" is no "page=" followed by digits, and the link keeps it as the client sent it.
  const std::string previous = paged.previous().value();
  EXPECT_TRUE(previous == "tx1:8080/1/api/events/paged?page=-1&page_size=15&" ||
              previous == "tx1:8080/1/api/events/paged?page_size=15&page=-1&")
      << previous;
  EXPECT_FALSE(paged.has_next());
}

TEST_F(GetEventLogsHandlerTest, AnswersThePageAsJsonWithLinksCountAndTimestamp) {
  host.answer(kCommand, answerWith({record(7, "PRESET_CHANGE"), record(6, "POWER_CHANGE")}, 30));
  const std::time_t before = std::time(nullptr);
  const web::HttpResponsePtr resp = page("page=1&page_size=15");
  const std::time_t after = std::time(nullptr);

  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->contentType(), web::CT_APPLICATION_JSON);
  const protobuf::PagedEvents paged = parsePaged(std::string(resp->body()));
  ASSERT_EQ(paged.events_size(), 2);
  EXPECT_EQ(paged.events(0).eventlogid().value(), 7);
  EXPECT_EQ(paged.events(0).eventtype(), protobuf::LoggedEvent::PRESET_CHANGE);
  EXPECT_EQ(paged.events(0).time().nanos(), 500000000);
  EXPECT_EQ(paged.events(0).device().guid().value(), "1");
  EXPECT_EQ(paged.events(1).eventlogid().value(), 6);
  EXPECT_EQ(paged.count().value(), 30);
  EXPECT_GE(paged.timestamp().seconds(), before);
  EXPECT_LE(paged.timestamp().seconds(), after);
  ASSERT_TRUE(paged.has_next());
  EXPECT_FALSE(paged.has_previous());
  // Two entries: either order is the map's; both end in "&".
  const std::string next = paged.next().value();
  EXPECT_TRUE(next == "tx1:8080/1/api/events/paged?page=2&page_size=15&" ||
              next == "tx1:8080/1/api/events/paged?page_size=15&page=2&")
      << next;
}

TEST_F(GetEventLogsHandlerTest, LatestAnswerIsRecorded) {
  host.answer(kCommand, answerWith({}, 1234));
  page("page=1&page_size=15");
  EXPECT_EQ(EventEndpointHelperClass::totalNumberOfEvents.load(), 1234);
  EXPECT_GT(EventEndpointHelperClass::timeStamp.load(), 0);
}

TEST_F(GetEventLogsHandlerTest, MissingOrNonNumericPagingIsAMissingParameterBeforeTheHost) {
  for (const std::string query :
       {"page_size=15", "page=abc&page_size=15", "page=1", "page=1&page_size=x", ""}) {
    EXPECT_THROW(page(query), RequestMissingQueryParameter) << query;
  }
  EXPECT_TRUE(host.actions().empty());
}

TEST_F(GetEventLogsHandlerTest, EmptyPageValueCountsAsMissing) {
  // The strict parser drops "page=" altogether.
  EXPECT_THROW(page("page=&page_size=15"), RequestMissingQueryParameter);
}

TEST_F(GetEventLogsHandlerTest, NumberBeyondIntIsOutOfRange) {
  EXPECT_THROW(page("page=99999999999&page_size=15"), std::out_of_range);
  EXPECT_TRUE(host.actions().empty());
}

TEST_F(GetEventLogsHandlerTest, AnswerWithoutValueOrCountIsOutOfRange) {
  host.answer(kCommand, Resource("count", ResourceValue(3)));
  EXPECT_THROW(page("page=1&page_size=15"), std::out_of_range);
  host.answer(kCommand, Resource("value", ResourceValue(ResourceValue::Map{})));
  EXPECT_ANY_THROW(page("page=1&page_size=15"));
  ResourceValue list;
  list.setList({});
  host.answer(kCommand, Resource("value", list));
  EXPECT_THROW(page("page=1&page_size=15"), std::out_of_range);
}

// ---- through the frame ----

class GetEventLogsHandlerFrameTest : public ::testing::Test {
 protected:
  GetEventLogsHandlerFrameTest() { installHost(&host, &info); }

  web::HttpResponsePtr get(const std::string& query) {
    web::HttpRequestPtr req = makeRequest(web::Get, "/1/api/events/paged", query);
    req->addHeader("Host", "127.0.0.1:8080");
    return throughFrame(handler, req);
  }

  test::RecordingHost host;
  test::FakePluginInfo info;
  GetEventLogsHandler handler;
};

TEST_F(GetEventLogsHandlerFrameTest, MissingPageSizeIsTheMissingParameterReply) {
  const web::HttpResponsePtr resp = get("page=1");
  EXPECT_EQ(resp->statusCode(), web::k500InternalServerError);
  EXPECT_EQ(resp->contentType(), web::CT_TEXT_PLAIN);
  EXPECT_NE(std::string(resp->body()).find("Request missing query parameter: page_size."),
            std::string::npos);
}

TEST_F(GetEventLogsHandlerFrameTest, NonNumericPageIsTheMissingParameterReply) {
  const web::HttpResponsePtr resp = get("page=abc&page_size=15");
  EXPECT_EQ(resp->statusCode(), web::k500InternalServerError);
  EXPECT_NE(std::string(resp->body()).find("Request missing query parameter: page."),
            std::string::npos);
}

TEST_F(GetEventLogsHandlerFrameTest, NumberTooLargeForIntIs500) {
  const web::HttpResponsePtr resp = get("page=1&page_size=2147483648");
  EXPECT_EQ(resp->statusCode(), web::k500InternalServerError);
  EXPECT_EQ(resp->contentType(), web::CT_TEXT_PLAIN);
  EXPECT_NE(std::string(resp->body()).find("stoi"), std::string::npos) << resp->body();
  EXPECT_TRUE(host.actions().empty());
}

TEST_F(GetEventLogsHandlerFrameTest, PageWithoutTypeIs200) {
  host.answer(kCommand, answerWith({record(1, "ALARM_CHANGE")}, 1));
  const web::HttpResponsePtr resp = get("page=1&page_size=15");
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  const protobuf::PagedEvents paged = parsePaged(std::string(resp->body()));
  EXPECT_EQ(paged.events_size(), 1);
  EXPECT_FALSE(paged.has_next());
  EXPECT_FALSE(paged.has_previous());
}

}  // namespace
}  // namespace halvor::kelo
