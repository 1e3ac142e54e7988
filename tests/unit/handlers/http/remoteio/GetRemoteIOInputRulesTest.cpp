#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kelo/handlers/http/remoteio/GetRemoteIOInputRules.h"
#include "support/HandlerTest.h"

namespace halvor::kelo {
namespace {

using tavelabi::Resource;
using tavelabi::ResourceValue;
using Texts = std::vector<std::string>;

Resource hostRule(const std::string& guid) {
  Resource rule;
  rule.values["label"] = ResourceValue("Low");
  rule.values["polarityMask"] = ResourceValue(1);
  rule.values["value"] = ResourceValue("RF on");
  rule.values["guid"] = ResourceValue(guid);
  rule.values["set_value"] = ResourceValue(1);
  rule.values["level"] = ResourceValue(false);
  return rule;
}

class GetRemoteIOInputRulesTest : public test::HandlerTest<GetRemoteIOInputRules> {};

TEST_F(GetRemoteIOInputRulesTest, ReadsEachListedRuleInOrderAsAnInput) {
  host.answer("/remoteio/inputs/list",
              Resource(ResourceValue(Texts{"/remoteio/input/2", "/remoteio/input/1"})));
  host.answer("/remoteio/input/1", hostRule("input1"));
  host.answer("/remoteio/input/2", hostRule("input2"));
  const web::HttpResponsePtr resp =
      call(host, web::Get, "/1/api/remote-io/rules/inputs", "", "", "s1");
  ASSERT_EQ(host.actions().size(), 3u);
  EXPECT_EQ(host.actions()[1].path, "/remoteio/input/2");
  const std::string body(resp->body());
  EXPECT_LT(body.find("input2"), body.find("input1"));
  EXPECT_NE(body.find(R"("type":"INPUT")"), std::string::npos);
  EXPECT_EQ(resp->statusCode(), 200);
}

}  // namespace
}  // namespace halvor::kelo
