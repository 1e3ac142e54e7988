#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kelo/handlers/http/remoteio/GetRemoteIOOutputActions.h"
#include "support/HandlerTest.h"

namespace halvor::kelo {
namespace {

using tavelabi::Resource;
using tavelabi::ResourceValue;
using Texts = std::vector<std::string>;

class GetRemoteIOOutputActionsTest : public test::HandlerTest<GetRemoteIOOutputActions> {};

TEST_F(GetRemoteIOOutputActionsTest, TheTwoStatesServeEveryOutputWithMasksZeroAndOne) {
  Resource answer;
  ResourceValue::List channels{ResourceValue(0), ResourceValue(4)};
  ResourceValue channelList;
  channelList.setType(tavelabi::ResourceValueType::LIST_VALUE);
  channelList.setList(channels);
  answer.values["channelId"] = channelList;
  answer.values["label"] = ResourceValue(Texts{"Unused", "RF on"});
  answer.values["values"] = ResourceValue(Texts{"Open", "Closed"});
  host.answer("/remoteio/outputs/actions", answer);
  const web::HttpResponsePtr resp =
      call(host, web::Get, "/1/api/remote-io/actions/outputs", "", "", "s1");
  EXPECT_EQ(resp->statusCode(), 200);
  EXPECT_EQ(std::string(resp->body()),
            R"({"actions":[{"value":"Unused","setValue":"0","triggers":{"triggers":[)"
            R"({"polarityMask":"0","label":"Unused"},{"polarityMask":"0","label":"Open"},)"
            R"({"polarityMask":"1","label":"Closed"}]}},)"
            R"({"value":"RF on","setValue":"4","triggers":{"triggers":[)"
            R"({"polarityMask":"0","label":"Open"},{"polarityMask":"1","label":"Closed"}]}}]})");
}

}  // namespace
}  // namespace halvor::kelo
