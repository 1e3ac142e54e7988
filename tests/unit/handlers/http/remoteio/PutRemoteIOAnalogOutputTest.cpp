#include <gtest/gtest.h>

#include <string>

#include "SequenceHost.h"
#include "kelo/handlers/http/remoteio/PutRemoteIOAnalogOutput.h"
#include "support/HandlerTest.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;

Resource hostOutput(int value, bool transitioning) {
  Resource output;
  output.values["guid"] = ResourceValue("ao1");
  output.values["label"] = ResourceValue("Power");
  output.values["maxValue"] = ResourceValue(1000);
  output.values["value"] = ResourceValue(value);
  output.values["set_value"] = ResourceValue(value);
  output.values["transitioning"] = ResourceValue(transitioning);
  return output;
}

class PutRemoteIOAnalogOutputTest : public test::HandlerTest<PutRemoteIOAnalogOutput> {};

TEST_F(PutRemoteIOAnalogOutputTest, WritesIntegersAndPollsTheGuidTheHostAnswers) {
  test::SequenceHost sequence;
  sequence.answer(CCRUD::Command, "/remoteio/analog/update",
                  Resource("guid", ResourceValue("ao1")));
  sequence.readsInTurn("/remoteio/analog/ao1",
                       {hostOutput(500, true), hostOutput(500, true), hostOutput(640, false)});
  const web::HttpResponsePtr resp =
      call(sequence, web::Put, "/1/api/remote-io/analogOutputs", "",
           R"({"guid":"ao1","label":"Power","maxValue":1000,"setValue":640})", "s1");
  const auto command = sequence.actionsOn("/remoteio/analog/update");
  ASSERT_EQ(command.size(), 1u);
  EXPECT_EQ(command[0].resource.values.at("set_value").getIntValue(), 640);
  EXPECT_EQ(command[0].resource.values.at("value").getIntValue(), 0);
  EXPECT_EQ(sequence.actionsOn("/remoteio/analog/ao1").size(), 3u);
  EXPECT_EQ(resp->statusCode(), 200);
  EXPECT_EQ(std::string(resp->body()),
            R"({"guid":"ao1","label":"Power","maxValue":1000,"value":640,"setValue":640})");
}

}  // namespace
}  // namespace halvor::kelo
