#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>

#include "halvor/protobuf/Time.pb.h"
#include "kelo/common/JsonOptions.h"
#include "kelo/handlers/http/time/PutDateTimeSettingsHandler.h"
#include "support/HandlerTest.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;

class PutDateTimeSettingsHandlerTest : public test::HandlerTest<PutDateTimeSettingsHandler> {
 protected:
  PutDateTimeSettingsHandlerTest() {
    setenv("TZ", "UTC0", 1);
    tzset();
  }
  ~PutDateTimeSettingsHandlerTest() override {
    unsetenv("TZ");
    tzset();
  }
};

TEST_F(PutDateTimeSettingsHandlerTest, WritesTheLocalTimeTextAndAnswersTheProcesssClock) {
  host.answer(CCRUD::Update, "/time/dateAndTime", Resource());
  const std::time_t before = std::time(nullptr);
  const web::HttpResponsePtr resp = call(host, web::Put, "/1/api/time_settings/date_and_time", "",
                                         R"({"dateAndTime":"2001-02-03T04:05:06Z"})", "s1");
  EXPECT_EQ(host.onlyAction().resource.values.at("set_value").getStringValue(), "2001-2-3 4:5:6");
  EXPECT_EQ(resp->statusCode(), 200);
  // The answer is the process's clock after the write, not an echo of the request.
  protobuf::DateAndTime answered;
  ASSERT_TRUE(JsonOptions::fromJson(std::string(resp->body()), answered).ok()) << resp->body();
  EXPECT_GE(answered.dateandtime().seconds(), before);
}

TEST_F(PutDateTimeSettingsHandlerTest, AnErrorMessageInTheAnswerIs500WithItsText) {
  host.answer(CCRUD::Update, "/time/dateAndTime",
              Resource("errorMessage", ResourceValue("clock is locked")));
  const web::HttpResponsePtr resp =
      call(host, web::Put, "/1/api/time_settings/date_and_time", "", "{}", "s1");
  EXPECT_EQ(resp->statusCode(), 500);
  EXPECT_EQ(std::string(resp->body()), "clock is locked");
}

TEST_F(PutDateTimeSettingsHandlerTest, ABodyThatIsNotJsonWritesTheEpoch) {
  host.answer(CCRUD::Update, "/time/dateAndTime", Resource());
  call(host, web::Put, "/1/api/time_settings/date_and_time", "", "not json", "s1");
  EXPECT_EQ(host.onlyAction().resource.values.at("set_value").getStringValue(), "1970-1-1 0:0:0");
}

}  // namespace
}  // namespace halvor::kelo
