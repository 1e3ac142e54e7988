#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "halvor/protobuf/RemoteIo.pb.h"
#include "kelo/common/JsonOptions.h"
#include "kelo/handlers/http/remoteio/GetRemoteIOInputActions.h"
#include "support/HandlerTest.h"

namespace halvor::kelo {
namespace {

using tavelabi::Resource;
using tavelabi::ResourceValue;
using Texts = std::vector<std::string>;

ResourceValue ints(const std::vector<int>& numbers) {
  ResourceValue::List entries;
  for (int number : numbers) entries.emplace_back(number);
  ResourceValue list;
  list.setType(tavelabi::ResourceValueType::LIST_VALUE);
  list.setList(entries);
  return list;
}

class GetRemoteIOInputActionsTest : public test::HandlerTest<GetRemoteIOInputActions> {
 protected:
  protobuf::RemoteIoActions get(const Resource& answer) {
    host.answer("/remoteio/inputs/actions", answer);
    const web::HttpResponsePtr resp =
        call(host, web::Get, "/1/api/remote-io/actions/inputs", "", "", "s1");
    EXPECT_EQ(resp->statusCode(), 200);
    protobuf::RemoteIoActions actions;
    EXPECT_TRUE(JsonOptions::fromJson(std::string(resp->body()), actions).ok()) << resp->body();
    return actions;
  }
};

Resource actionsOf(const Texts& labels, const Texts& names) {
  Resource answer;
  std::vector<int> channels;
  for (std::size_t index = 0; index < labels.size(); ++index) channels.push_back(int(index) + 10);
  answer.values["channelId"] = ints(channels);
  answer.values["label"] = ResourceValue(labels);
  answer.values["polarityMask"] = ints({99, 99});  // not used: the masks are the eight bits
  answer.values["value"] = ResourceValue(names);
  return answer;
}

TEST_F(GetRemoteIOInputActionsTest, EachLabelTakesEightNamesAndTheEightBits) {
  const Texts names{"a", "b", "c", "d", "e", "f", "g", "h", "i", "j", "k", "l", "m", "n", "o", "p"};
  const protobuf::RemoteIoActions actions = get(actionsOf({"RF on", "RF off"}, names));
  ASSERT_EQ(actions.actions_size(), 2);
  const protobuf::RemoteIoAction& second = actions.actions(1);
  EXPECT_EQ(second.value().value(), "RF off");
  EXPECT_EQ(second.setvalue().value(), "11");
  ASSERT_EQ(second.triggers().triggers_size(), 8);
  EXPECT_EQ(second.triggers().triggers(0).label().value(), "i");
  EXPECT_EQ(second.triggers().triggers(0).polaritymask().value(), "1");
  EXPECT_EQ(second.triggers().triggers(7).label().value(), "p");
  EXPECT_EQ(second.triggers().triggers(7).polaritymask().value(), "128");
}

TEST_F(GetRemoteIOInputActionsTest, AnUnusedLabelStartsWithUnusedAndABlankNameIsLeftOut) {
  const Texts names{"Low", " ", "c", "d", "e", "f", "g", "h"};
  const protobuf::RemoteIoActions actions = get(actionsOf({"Unused"}, names));
  ASSERT_EQ(actions.actions_size(), 1);
  const auto& triggers = actions.actions(0).triggers();
  ASSERT_EQ(triggers.triggers_size(), 8);  // "Unused" and seven names
  EXPECT_EQ(triggers.triggers(0).label().value(), "Unused");
  EXPECT_EQ(triggers.triggers(0).polaritymask().value(), "0");
  EXPECT_EQ(triggers.triggers(2).label().value(), "c");
  EXPECT_EQ(triggers.triggers(2).polaritymask().value(), "4");
}

TEST_F(GetRemoteIOInputActionsTest, AnEmptyLabelListGivesNoActionsEvenWithNames) {
  const protobuf::RemoteIoActions actions =
      get(actionsOf({}, {"a", "b", "c", "d", "e", "f", "g", "h"}));
  EXPECT_EQ(actions.actions_size(), 0);
}

TEST_F(GetRemoteIOInputActionsTest, EveryListIsMandatory) {
  Resource answer = actionsOf({}, {});
  answer.values.erase("polarityMask");
  host.answer("/remoteio/inputs/actions", answer);
  EXPECT_THROW(call(host, web::Get, "/1/api/remote-io/actions/inputs", "", "", "s1"),
               std::out_of_range);
}

}  // namespace
}  // namespace halvor::kelo
