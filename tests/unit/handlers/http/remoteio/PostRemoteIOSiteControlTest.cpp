#include <gtest/gtest.h>

#include <string>

#include "SequenceHost.h"
#include "kelo/handlers/http/remoteio/PostRemoteIOSiteControl.h"
#include "support/HandlerTest.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;

Resource hostControl(const std::string& guid, bool transitioning) {
  Resource control;
  control.values["guid"] = ResourceValue(guid);
  control.values["name"] = ResourceValue("Fans");
  control.values["severity"] = ResourceValue(1);
  control.values["delay"] = ResourceValue(0);
  control.values["latch"] = ResourceValue(false);
  control.values["log"] = ResourceValue(true);
  control.values["input1"] = ResourceValue("2");
  control.values["input2"] = ResourceValue("3");
  control.values["logicalOperator"] = ResourceValue(0);
  control.values["logic1"] = ResourceValue(true);
  control.values["logic2"] = ResourceValue(true);
  control.values["state"] = ResourceValue(false);
  control.values["canBeDeleted"] = ResourceValue(true);
  control.values["transitioning"] = ResourceValue(transitioning);
  return control;
}

class PostRemoteIOSiteControlTest : public test::HandlerTest<PostRemoteIOSiteControl> {};

TEST_F(PostRemoteIOSiteControlTest, CreatesAndAnswersTheNewControlUnderTheHostsGuid) {
  test::SequenceHost sequence;
  sequence.answer(CCRUD::Command, "/remoteio/siteControl/create",
                  Resource("guid", ResourceValue("sc9")));
  sequence.readsInTurn("/remoteio/siteControl/sc9",
                       {hostControl("sc9", true), hostControl("sc9", false)});
  const web::HttpResponsePtr resp = call(
      sequence, web::Post, "/1/api/remote-io/siteControls", "",
      R"({"guid":"mine","name":"Fans","input1":{"polarityMask":"2"},"input2":{"polarityMask":"3"}})",
      "s1");
  const auto command = sequence.actionsOn("/remoteio/siteControl/create");
  ASSERT_EQ(command.size(), 1u);
  EXPECT_EQ(command[0].resource.values.at("guid").getStringValue(), "mine");
  EXPECT_EQ(command[0].resource.values.at("input1").getStringValue(), "2");
  EXPECT_EQ(sequence.actionsOn("/remoteio/siteControl/sc9").size(), 2u);
  EXPECT_EQ(resp->statusCode(), 200);
  const std::string body(resp->body());
  EXPECT_NE(body.find(R"("guid":"sc9")"), std::string::npos) << body;
  EXPECT_NE(body.find(R"("input2":{"polarityMask":"3"})"), std::string::npos) << body;
}

}  // namespace
}  // namespace halvor::kelo
