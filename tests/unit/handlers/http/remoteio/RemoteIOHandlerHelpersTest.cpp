#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "SequenceHost.h"
#include "kelo/handlers/http/remoteio/RemoteIOHandlerHelpers.h"
#include "tavelabi/Exceptions.h"

namespace halvor::kelo {
namespace {

using protobuf::RemoteIoEnums;
using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceAction;
using tavelabi::ResourceValue;

Resource hostRule() {
  Resource rule;
  rule.values["label"] = ResourceValue("Active low");
  rule.values["polarityMask"] = ResourceValue(2);
  rule.values["value"] = ResourceValue("RF on");
  rule.values["guid"] = ResourceValue("input2");
  rule.values["set_value"] = ResourceValue(7);
  rule.values["level"] = ResourceValue(false);
  return rule;
}

Resource hostControl() {
  Resource control;
  control.values["guid"] = ResourceValue("sc1");
  control.values["name"] = ResourceValue("Cooling");
  control.values["severity"] = ResourceValue(3);
  control.values["delay"] = ResourceValue(5);
  control.values["latch"] = ResourceValue(true);
  control.values["log"] = ResourceValue(false);
  control.values["input1"] = ResourceValue("1");
  control.values["input2"] = ResourceValue("4");
  control.values["logicalOperator"] = ResourceValue(1);
  control.values["logic1"] = ResourceValue(true);
  control.values["logic2"] = ResourceValue(false);
  control.values["state"] = ResourceValue(true);
  return control;
}

Resource settledAfter(Resource resource, bool transitioning) {
  resource.values["transitioning"] = ResourceValue(transitioning);
  return resource;
}

TEST(RemoteIOHandlerHelpersTest, ARuleGivesItsNumbersAsDecimalText) {
  const auto rule = RemoteIOHandlerHelpers::makeRemoteIoRule(hostRule(), RemoteIoEnums::INPUT);
  EXPECT_EQ(rule->trigger().polaritymask().value(), "2");
  EXPECT_EQ(rule->trigger().label().value(), "Active low");
  EXPECT_EQ(rule->action().setvalue().value(), "7");
  EXPECT_EQ(rule->action().value().value(), "RF on");
  EXPECT_EQ(rule->action().triggers().triggers_size(), 0);
  EXPECT_EQ(rule->guid().value(), "input2");
  EXPECT_TRUE(rule->has_level());
  EXPECT_FALSE(rule->level().value());
  EXPECT_EQ(rule->type(), RemoteIoEnums::INPUT);
  EXPECT_FALSE(rule->has_custom());
}

TEST(RemoteIOHandlerHelpersTest, ARuleWithNameButNoLogHasNoCustomPart) {
  Resource resource = hostRule();
  resource.values["name"] = ResourceValue("Door");
  resource.values["severity"] = ResourceValue(2);
  EXPECT_FALSE(
      RemoteIOHandlerHelpers::makeRemoteIoRule(resource, RemoteIoEnums::OUTPUT)->has_custom());
}

TEST(RemoteIOHandlerHelpersTest, ARuleWithNameSeverityAndLogHasItsCustomPart) {
  Resource resource = hostRule();
  resource.values["name"] = ResourceValue("Door");
  resource.values["severity"] = ResourceValue(2);
  resource.values["log"] = ResourceValue(true);
  const auto rule = RemoteIOHandlerHelpers::makeRemoteIoRule(resource, RemoteIoEnums::INPUT);
  ASSERT_TRUE(rule->has_custom());
  EXPECT_EQ(rule->custom().name().value(), "Door");
  EXPECT_EQ(rule->custom().severity(), 2);
  EXPECT_TRUE(rule->custom().log().value());
  EXPECT_FALSE(rule->custom().has_canbedeleted());
}

TEST(RemoteIOHandlerHelpersTest, ARuleWithoutAMandatoryKeyFailsWithMapAt) {
  Resource resource = hostRule();
  resource.values.erase("level");
  EXPECT_THROW(RemoteIOHandlerHelpers::makeRemoteIoRule(resource, RemoteIoEnums::INPUT),
               std::out_of_range);
}

TEST(RemoteIOHandlerHelpersTest, AnUnusedActionStartsItsTriggersWithUnusedAndMaskZero) {
  const protobuf::RemoteIoAction action = RemoteIOHandlerHelpers::makeRemoteIoAction(
      0, "Unused", RemoteIoEnums::INPUT, {"Low", "High"}, {1, 2});
  EXPECT_EQ(action.value().value(), "Unused");
  EXPECT_EQ(action.setvalue().value(), "0");
  ASSERT_EQ(action.triggers().triggers_size(), 3);
  EXPECT_EQ(action.triggers().triggers(0).label().value(), "Unused");
  EXPECT_EQ(action.triggers().triggers(0).polaritymask().value(), "0");
  EXPECT_EQ(action.triggers().triggers(1).label().value(), "Low");
  EXPECT_EQ(action.triggers().triggers(2).polaritymask().value(), "2");
}

TEST(RemoteIOHandlerHelpersTest, ABlankNameIsSkippedAndTheOtherMasksStayWhereTheyWere) {
  const std::vector<std::string> names{"a", "b", " ", "d", "e", "f", "g", "h"};
  const protobuf::RemoteIoAction action = RemoteIOHandlerHelpers::makeRemoteIoAction(
      3, "RF on", RemoteIoEnums::INPUT, names, {1, 2, 4, 8, 16, 32, 64, 128});
  ASSERT_EQ(action.triggers().triggers_size(), 7);
  EXPECT_EQ(action.triggers().triggers(1).label().value(), "b");
  EXPECT_EQ(action.triggers().triggers(1).polaritymask().value(), "2");
  EXPECT_EQ(action.triggers().triggers(2).label().value(), "d");
  EXPECT_EQ(action.triggers().triggers(2).polaritymask().value(), "8");
}

TEST(RemoteIOHandlerHelpersTest, TheRuleWriteFormSendsNumbersBackAsText) {
  const Resource resource = RemoteIOHandlerHelpers::makeRemoteRuleResource(
      R"({"guid":"input2","level":true,"action":{"value":"RF on","setValue":"7"},)"
      R"("trigger":{"label":"High","polarityMask":"2"}})");
  EXPECT_EQ(resource.values.at("set_value").getStringValue(), "7");
  EXPECT_EQ(resource.values.at("polarityMask").getStringValue(), "2");
  EXPECT_EQ(resource.values.at("value").getStringValue(), "RF on");
  EXPECT_EQ(resource.values.at("label").getStringValue(), "High");
  EXPECT_EQ(resource.values.at("guid").getStringValue(), "input2");
  EXPECT_TRUE(resource.values.at("level").getBoolValue());
  EXPECT_EQ(resource.values.count("name"), 0u);
}

TEST(RemoteIOHandlerHelpersTest, TheRuleWriteFormAddsTheCustomKeysWhenTheBodyHasThem) {
  const Resource resource = RemoteIOHandlerHelpers::makeRemoteRuleResource(
      R"({"guid":"input4","custom":{"name":"Door","severity":2}})");
  EXPECT_EQ(resource.values.at("name").getStringValue(), "Door");
  EXPECT_EQ(resource.values.at("severity").getIntValue(), 2);
  EXPECT_FALSE(resource.values.at("log").getBoolValue());
}

TEST(RemoteIOHandlerHelpersTest, ABodyThatIsNotJsonWritesEveryKeyAtItsDefault) {
  const Resource resource = RemoteIOHandlerHelpers::makeRemoteRuleResource("not json");
  EXPECT_EQ(resource.values.size(), 6u);
  EXPECT_EQ(resource.values.at("set_value").getStringValue(), "");
  EXPECT_FALSE(resource.values.at("level").getBoolValue());
}

TEST(RemoteIOHandlerHelpersTest, AnAnalogOutputNeedsEveryKeyAndReadsSetValue) {
  Resource resource;
  resource.values["guid"] = ResourceValue("ao1");
  resource.values["label"] = ResourceValue("Power");
  resource.values["maxValue"] = ResourceValue(1000);
  resource.values["value"] = ResourceValue(500);
  resource.values["set_value"] = ResourceValue(600);
  const auto output = RemoteIOHandlerHelpers::makeRemoteIoAnalogOutput(resource);
  EXPECT_EQ(output->setvalue().value(), 600);
  EXPECT_EQ(output->value().value(), 500);
  EXPECT_EQ(output->maxvalue().value(), 1000);
  resource.values.erase("set_value");
  EXPECT_THROW(RemoteIOHandlerHelpers::makeRemoteIoAnalogOutput(resource), std::out_of_range);
}

TEST(RemoteIOHandlerHelpersTest, ASiteControlsInputsAreTheMasksOfItsTriggers) {
  const auto control = RemoteIOHandlerHelpers::makeRemoteIoSiteControl(hostControl());
  EXPECT_EQ(control->input1().polaritymask().value(), "1");
  EXPECT_EQ(control->input2().polaritymask().value(), "4");
  EXPECT_EQ(control->logicaloperator(), 1);
  EXPECT_FALSE(control->has_canbedeleted());
  const Resource back = RemoteIOHandlerHelpers::makeRemoteSiteControlResource(
      R"({"guid":"sc1","input1":{"polarityMask":"1"},"input2":{"polarityMask":"4"}})");
  EXPECT_EQ(back.values.at("input1").getStringValue(), "1");
  EXPECT_EQ(back.values.at("input2").getStringValue(), "4");
  EXPECT_EQ(back.values.size(), 13u);  // every key, always
  EXPECT_FALSE(back.values.at("canBeDeleted").getBoolValue());
}

TEST(RemoteIOHandlerHelpersTest, AWaitWithoutTransitioningKeepsReading) {
  test::SequenceHost host;
  host.readsInTurn("/remoteio/input/2",
                   {hostRule(), settledAfter(hostRule(), true), settledAfter(hostRule(), false)});
  ResourceAction poll(CCRUD::Read, "/remoteio/input/2", nullptr, "s1");
  const std::string json =
      RemoteIOHandlerHelpers::waitForRuleSave(poll, RemoteIoEnums::INPUT, &host);
  EXPECT_EQ(host.actionsOn("/remoteio/input/2").size(), 3u);
  EXPECT_NE(json.find(R"("type":"INPUT")"), std::string::npos) << json;
}

TEST(RemoteIOHandlerHelpersTest, ADeletionIsConfirmedOnlyByANonExistentPath) {
  test::SequenceHost host;
  int reads = 0;
  host.fail("/remoteio/siteControl/sc1", [&reads] {
    if (++reads < 3) return;  // still there
    throw tavelabi::NonExistentResourcePathException("gone");
  });
  ResourceAction poll(CCRUD::Read, "/remoteio/siteControl/sc1", nullptr, "s1");
  EXPECT_EQ(RemoteIOHandlerHelpers::waitForSiteControlDelete(poll, &host),
            "Successfully deleted Site Control.");
  EXPECT_EQ(reads, 3);
}

TEST(RemoteIOHandlerHelpersTest, ADeletionWaitPassesOtherFailuresOn) {
  test::SequenceHost host;
  host.fail("/remoteio/siteControl/sc1", [] { throw tavelabi::AuthorizationFailure("not yours"); });
  ResourceAction poll(CCRUD::Read, "/remoteio/siteControl/sc1", nullptr, "s1");
  EXPECT_THROW(RemoteIOHandlerHelpers::waitForSiteControlDelete(poll, &host),
               tavelabi::AuthorizationFailure);
}

}  // namespace
}  // namespace halvor::kelo
