#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "halvor/protobuf/Presets.pb.h"
#include "kelo/handlers/ws/WsGetActivePreset.h"
#include "kelo/handlers/ws/WsGetPresetHardwareErrors.h"
#include "kelo/handlers/ws/WsGetPresetLayout.h"
#include "kelo/handlers/ws/WsGetPresetSummaryList.h"
#include "tavelabi/Exceptions.h"
#include "unit/handlers/ws/WsTestSupport.h"

namespace halvor::kelo::test {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;

ResourceValue textList(const std::vector<std::string>& texts) { return ResourceValue(texts); }

ResourceValue presetEntry(const std::string& guid, const std::string& name) {
  return ResourceValue(ResourceValue::Map{
      {"guid", guid},
      {"value", ResourceValue(ResourceValue::Map{
                    {"presetName", ResourceValue(ResourceValue::Map{{"value", name}})}})}});
}

// The simulator's preset model seeds the presets; the tests push their own changes.
class WsPresetEndpointsTest : public ::testing::Test {
 protected:
  WsPresetEndpointsTest() { unitHost.setConnectivity("127.0.0.1", 5); }

  template <class Message>
  Message frame(std::size_t index) {
    Message message;
    EXPECT_TRUE(message.ParseFromString(conn->sent().at(index).data));
    return message;
  }

  WsUnitHost unitHost;
  LogCapture log{WsUnitHost::kLoggerId};
  std::string session = unitHost.openSession();
  std::shared_ptr<FakeConnection> conn = std::make_shared<FakeConnection>();
};

TEST_F(WsPresetEndpointsTest, HardwareErrorsStartWithAnEmptyListAndPushEachList) {
  WsGetPresetHardwareErrors endpoint;
  endpoint.handleNewConnection(upgradeRequest("", "SessionID=" + session), conn);
  ASSERT_EQ(conn->sent().size(), 1u);
  EXPECT_EQ(conn->sent()[0].type, web::WebSocketMessageType::Binary);
  EXPECT_EQ(frame<protobuf::HardWareErrorList>(0).errors_size(), 0);
  EXPECT_EQ(unitHost.manager().getListeners().count("/presets/hardwareErrors"), 1u);

  unitHost.hostAction(CCRUD::Update, "/presets/hardwareErrors",
                      Resource(textList({"PA 2 over temperature", "exciter B fault"})));
  ASSERT_EQ(conn->sent().size(), 2u);
  const auto errors = frame<protobuf::HardWareErrorList>(1);
  ASSERT_EQ(errors.errors_size(), 2);
  EXPECT_EQ(errors.errors(0).value(), "PA 2 over temperature");
  EXPECT_EQ(errors.errors(1).value(), "exciter B fault");
}

TEST_F(WsPresetEndpointsTest, HardwareErrorsWithoutValueMakeNoMessageAndNeverReadTheHost) {
  std::string message;
  Resource noValue("other", ResourceValue(1));
  // A dead session would fail any read: the generator makes none.
  WsGetPresetHardwareErrors::messageGenerator(upgradeRequest(), noValue, "dead-session", message,
                                              "/presets/hardwareErrors");
  EXPECT_TRUE(message.empty());
  Resource withErrors(textList({"x"}));
  WsGetPresetHardwareErrors::messageGenerator(upgradeRequest(), withErrors, "dead-session", message,
                                              "/presets/hardwareErrors");
  protobuf::HardWareErrorList errors;
  ASSERT_TRUE(errors.ParseFromString(message));
  EXPECT_EQ(errors.errors(0).value(), "x");
}

TEST_F(WsPresetEndpointsTest, TheActivePresetIsReadFirstThenPushedFromACompleteResource) {
  WsGetActivePreset endpoint;
  endpoint.handleNewConnection(upgradeRequest("", "SessionID=" + session), conn);
  ASSERT_EQ(conn->sent().size(), 1u);
  EXPECT_EQ(frame<protobuf::BroadcastPreset>(0).guid().value(), "1");

  Resource pushed("guid", ResourceValue("9"));
  pushed.values["value"] = ResourceValue(
      ResourceValue::Map{{"mode", ResourceValue(ResourceValue::Map{{"value", "DRM_PLUS"}})}});
  unitHost.hostAction(CCRUD::Update, "/presets/active/details", pushed);
  ASSERT_EQ(conn->sent().size(), 2u);
  const auto preset = frame<protobuf::BroadcastPreset>(1);
  EXPECT_EQ(preset.guid().value(), "9");
  EXPECT_EQ(preset.resources().at("mode").values().at("value").stringvalue().value(), "DRM_PLUS");
}

TEST_F(WsPresetEndpointsTest, AnActivePresetPushWithoutGuidIsMadeFromTheRead) {
  std::string message;
  Resource partial("value", ResourceValue(ResourceValue::Map{}));
  WsGetActivePreset::messageGenerator(upgradeRequest("", "SessionID=" + session), partial, session,
                                      message, "/presets/active/details");
  protobuf::BroadcastPreset preset;
  ASSERT_TRUE(preset.ParseFromString(message));
  EXPECT_EQ(preset.guid().value(), "1");
  EXPECT_EQ(preset.resources().at("presetName").values().at("value").stringvalue().value(),
            "Morning FM");
}

TEST_F(WsPresetEndpointsTest, ADeadSessionFailsTheActivePresetsRead) {
  std::string message;
  Resource complete("guid", ResourceValue("2"));
  complete.values["value"] = ResourceValue(ResourceValue::Map{});
  EXPECT_THROW(WsGetActivePreset::messageGenerator(upgradeRequest(), complete, "dead-session",
                                                   message, "/presets/active/details"),
               tavelabi::NonExistentSessionException);
}

TEST_F(WsPresetEndpointsTest, TheLayoutIsTheHostsTextInABinaryFrame) {
  WsGetPresetLayout endpoint;
  endpoint.handleNewConnection(upgradeRequest("", "SessionID=" + session), conn);
  ASSERT_EQ(conn->sent().size(), 1u);
  EXPECT_EQ(conn->sent()[0].type, web::WebSocketMessageType::Binary);
  EXPECT_EQ(conn->sent()[0].data.rfind(R"({"sections":[)", 0), 0u) << conn->sent()[0].data;
  unitHost.hostAction(CCRUD::Update, "/presets/layout", Resource(ResourceValue("{\"v\":2}")));
  ASSERT_EQ(conn->sent().size(), 2u);
  EXPECT_EQ(conn->sent()[1].data, "{\"v\":2}");
}

TEST_F(WsPresetEndpointsTest, TheSummaryListIsReadFirstThenPushedFromTheListItCarries) {
  WsGetPresetSummaryList endpoint;
  endpoint.handleNewConnection(upgradeRequest("", "SessionID=" + session), conn);
  ASSERT_EQ(conn->sent().size(), 1u);
  EXPECT_EQ(frame<protobuf::BroadcastPresetList>(0).presets_size(), 12);

  ResourceValue list;
  list.setType(tavelabi::ResourceValueType::LIST_VALUE);
  list.setList({presetEntry("20", "Late show"), presetEntry("3", "Night")});
  unitHost.hostAction(CCRUD::Update, "/presets/list", Resource(list));
  ASSERT_EQ(conn->sent().size(), 2u);
  const auto presets = frame<protobuf::BroadcastPresetList>(1);
  ASSERT_EQ(presets.presets_size(), 2);
  EXPECT_EQ(presets.presets(0).guid().value(), "20");
  EXPECT_EQ(presets.presets(1).guid().value(), "3");
}

TEST_F(WsPresetEndpointsTest, ASummaryListPushWithValueDoesNotReadTheHost) {
  std::string message;
  ResourceValue list;
  list.setType(tavelabi::ResourceValueType::LIST_VALUE);
  list.setList({presetEntry("5", "Day")});
  Resource pushed(list);
  // A dead session would fail a read: none is made.
  WsGetPresetSummaryList::messageGenerator(upgradeRequest(), pushed, "dead-session", message,
                                           "/presets/list");
  protobuf::BroadcastPresetList presets;
  ASSERT_TRUE(presets.ParseFromString(message));
  EXPECT_EQ(presets.presets(0).guid().value(), "5");
}

}  // namespace
}  // namespace halvor::kelo::test
