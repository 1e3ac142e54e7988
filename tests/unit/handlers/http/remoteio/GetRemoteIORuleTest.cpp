#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "kelo/handlers/http/remoteio/GetRemoteIORule.h"
#include "support/HandlerTest.h"

namespace halvor::kelo {
namespace {

using tavelabi::Resource;
using tavelabi::ResourceValue;

Resource hostRule(const std::string& guid) {
  Resource rule;
  rule.values["label"] = ResourceValue("Closed");
  rule.values["polarityMask"] = ResourceValue(1);
  rule.values["value"] = ResourceValue("RF on");
  rule.values["guid"] = ResourceValue(guid);
  rule.values["set_value"] = ResourceValue(3);
  rule.values["level"] = ResourceValue(true);
  return rule;
}

class GetRemoteIORuleTest : public test::HandlerTest<GetRemoteIORule> {
 protected:
  web::HttpResponsePtr get(const std::string& guid) {
    return callMember(&GetRemoteIORule::getRemoteIORule,
                      test::makeRequest(web::Get, "/1/api/remote-io/rules/" + guid, ""), "s1",
                      guid);
  }
};

TEST_F(GetRemoteIORuleTest, AnInputGuidGetsASlashAfterTheWord) {
  host.answer("/remoteio/input/12", hostRule("input12"));
  const web::HttpResponsePtr resp = get("input12");
  EXPECT_EQ(host.onlyAction().path, "/remoteio/input/12");
  EXPECT_EQ(resp->statusCode(), 200);
  EXPECT_NE(std::string(resp->body()).find(R"("type":"INPUT")"), std::string::npos);
}

TEST_F(GetRemoteIORuleTest, AnyOtherGuidGetsItsSlashAtPositionSix) {
  host.answer("/remoteio/output/2", hostRule("output2"));
  const web::HttpResponsePtr resp = get("output2");
  EXPECT_EQ(host.onlyAction().path, "/remoteio/output/2");
  EXPECT_NE(std::string(resp->body()).find(R"("type":"OUTPUT")"), std::string::npos);
}

TEST_F(GetRemoteIORuleTest, AGuidShorterThanThePositionFailsOutOfRange) {
  EXPECT_THROW(get("out"), std::out_of_range);
  EXPECT_TRUE(host.actions().empty());
}

}  // namespace
}  // namespace halvor::kelo
