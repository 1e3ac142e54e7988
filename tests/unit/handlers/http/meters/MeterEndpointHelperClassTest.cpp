#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "kelo/common/JsonOptions.h"
#include "kelo/handlers/http/meters/MeterEndpointHelperClass.h"
#include "support/FakePluginInfo.h"
#include "support/RecordingHost.h"
#include "support/Requests.h"
#include "tavelabi/Exceptions.h"
#include "unit/handlers/http/meters/MeterResources.h"
#include "unit/handlers/ws/WsTestSupport.h"

namespace halvor::kelo {
namespace {

using Helper = MeterEndpointHelperClass;
using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;
using test::MeterResources;

class MeterEndpointHelperClassTest : public ::testing::Test {
 protected:
  std::string json(const google::protobuf::Message& message) {
    return JsonOptions::toJson(message);
  }
  void failWithNoResource(const std::string& path) {
    host.fail(path, [path] {
      throw tavelabi::NonExistentResourcePathException("No resource at " + path);
    });
  }

  test::RecordingHost host;
  test::FakePluginInfo info;
  test::LogCapture log{info.getLoggerId()};
  web::HttpRequestPtr req = test::makeRequest(web::Get, "/1/api/meters/collections", "");
};

// ---- one meter ----

TEST_F(MeterEndpointHelperClassTest, AMeterIsReadUnderTheSessionWithTheFlagAndKeepsEveryKey) {
  host.answer("/m/power", MeterResources::meter("/m/power", 5012.5));
  const auto meter = Helper::getCurrentMeterInfo(req, &host, &info, "/m/power", "s1", false);

  const tavelabi::ResourceAction& read = host.onlyAction();
  EXPECT_EQ(read.action, CCRUD::Read);
  EXPECT_EQ(read.path, "/m/power");
  EXPECT_EQ(read.sessionId, "s1");
  EXPECT_EQ(read.pluginInfo, &info);
  EXPECT_EQ(MeterResources::flagOf(read), 0);
  EXPECT_EQ(read.resource.values.size(), 1u);
  EXPECT_EQ(json(*meter),
            R"({"guid":"guid-of-/m/power","path":"/m/power",)"
            R"("value":{"values":{"value":{"doubleValue":5012.5,"type":"DOUBLE"}}},)"
            R"("units":"W","min":0,"max":6000,"label":"Forward power","digitsToDisplay":1,)"
            R"("device":{"guid":"amplifier3","name":"amplifier"}})");
}

TEST_F(MeterEndpointHelperClassTest, TheFlagGivenIsTheFlagEveryReadCarries) {
  host.answer("/m/power", MeterResources::meter("/m/power", 1.0));
  Helper::getCurrentMeterInfo(req, &host, &info, "/m/power", "s1", true);
  EXPECT_EQ(MeterResources::flagOf(host.onlyAction()), 1);
}

TEST_F(MeterEndpointHelperClassTest, AnUnreadableMeterIsAnErrorLineAndAMeterWithOnlyItsDevice) {
  failWithNoResource("/m/gone");
  const auto meter = Helper::getCurrentMeterInfo(req, &host, &info, "/m/gone", "s1", false);
  EXPECT_TRUE(meter->has_device());
  EXPECT_EQ(meter->device().ByteSizeLong(), 0u);
  EXPECT_FALSE(meter->has_guid());
  EXPECT_FALSE(meter->has_path());
  EXPECT_FALSE(meter->has_value());
  EXPECT_EQ(json(*meter), R"({"device":{}})");
  EXPECT_EQ(log.count(el::Level::Error, "No resource at /m/gone"), 1u);
  // The line is the exception's diagnostic text, which names its type.
  EXPECT_EQ(log.count(el::Level::Error, "NonExistentResourcePathException"), 1u);
}

TEST_F(MeterEndpointHelperClassTest, ADeadSessionOnAMeterIsCaughtLikeAnyOtherFailure) {
  host.fail("/m/x", [] { throw tavelabi::NonExistentSessionException("Session s1 is gone"); });
  const auto meter = Helper::getCurrentMeterInfo(req, &host, &info, "/m/x", "s1", false);
  EXPECT_EQ(json(*meter), R"({"device":{}})");
  EXPECT_EQ(log.count(el::Level::Error, "Session s1 is gone"), 1u);
}

TEST_F(MeterEndpointHelperClassTest, TheDeviceGuidIsTheNameDirectlyFollowedByTheId) {
  Resource meter("deviceName", ResourceValue(std::string("exciter")));
  meter.values["deviceId"] = ResourceValue(std::string("2"));
  const auto converted = Helper::convertMeterToHalvorPbMeter(meter);
  EXPECT_EQ(converted->device().guid().value(), "exciter2");
  EXPECT_EQ(converted->device().name().value(), "exciter");
}

TEST_F(MeterEndpointHelperClassTest, WithoutADeviceIdTheDeviceHasOnlyAName) {
  const auto converted = Helper::convertMeterToHalvorPbMeter(
      Resource("deviceName", ResourceValue(std::string("fan"))));
  EXPECT_EQ(json(*converted), R"({"device":{"name":"fan"}})");
}

TEST_F(MeterEndpointHelperClassTest, AMeterWithoutDeviceKeysStillHasAnEmptyDevice) {
  const auto converted = Helper::convertMeterToHalvorPbMeter(Resource(ResourceValue(3)));
  EXPECT_TRUE(converted->has_device());
  EXPECT_EQ(json(*converted),
            R"({"value":{"values":{"value":{"intValue":3,"type":"INT32"}}},"device":{}})");
}

TEST_F(MeterEndpointHelperClassTest, ADeviceIdWithoutADeviceNameThrowsMapAt) {
  try {
    Helper::convertMeterToHalvorPbMeter(Resource("deviceId", ResourceValue(std::string("2"))));
    FAIL() << "no exception";
  } catch (const std::out_of_range& error) {
    EXPECT_STREQ(error.what(), "map::at");
  }
}

TEST_F(MeterEndpointHelperClassTest, ADeviceIdWithoutADeviceNameIsNotCaughtByTheMeterRead) {
  host.answer("/m/odd", Resource("deviceId", ResourceValue(std::string("2"))));
  EXPECT_THROW(Helper::getCurrentMeterInfo(req, &host, &info, "/m/odd", "s1", false),
               std::out_of_range);
}

TEST_F(MeterEndpointHelperClassTest, EveryTypeOfReadingKeepsItsType) {
  ResourceValue single;
  single.setType(tavelabi::ResourceValueType::FLOAT);
  single.setFloatValue(2.5f);
  const std::vector<std::pair<ResourceValue, std::string>> readings = {
      {ResourceValue(48.25), R"({"doubleValue":48.25,"type":"DOUBLE"})"},
      {single, R"({"floatValue":2.5,"type":"FLOAT"})"},
      {ResourceValue(3200), R"({"intValue":3200,"type":"INT32"})"},
      {ResourceValue(false), R"({"boolValue":false,"type":"BOOL"})"},
      {ResourceValue(std::string("Running")), R"({"stringValue":"Running","type":"STRING"})"},
  };
  for (const auto& [reading, expected] : readings) {
    const auto meter = Helper::convertMeterToHalvorPbMeter(Resource(reading));
    EXPECT_EQ(json(*meter), R"({"value":{"values":{"value":)" + expected + R"(}},"device":{}})");
  }
}

TEST_F(MeterEndpointHelperClassTest, AMeterWithoutAReadingHasNoValue) {
  Resource meter("label", ResourceValue(std::string("Spare")));
  const auto converted = Helper::convertMeterToHalvorPbMeter(meter);
  EXPECT_FALSE(converted->has_value());
  EXPECT_EQ(converted->label().value(), "Spare");
}

TEST_F(MeterEndpointHelperClassTest, ConvertingGivesWhatReadingTheSameResourceGives) {
  const Resource resource = MeterResources::meter("/m/power", 12.0);
  host.answer("/m/power", resource);
  const auto read = Helper::getCurrentMeterInfo(req, &host, &info, "/m/power", "s1", false);
  const auto converted = Helper::convertMeterToHalvorPbMeter(resource);
  EXPECT_EQ(json(*read), json(*converted));
}

// ---- groups and collections ----

TEST_F(MeterEndpointHelperClassTest, AGroupReadsItselfThenEachMeterInOrderWithTheSameFlag) {
  host.answer("/m/g", MeterResources::listing({"/m/g/b", "/m/g/deep/a"},
                                              {{"guid", "G1"}, {"path", "/m/g"}, {"label", "PA"}}));
  host.answer("/m/g/b", Resource(ResourceValue(1.5)));
  host.answer("/m/g/deep/a", Resource(ResourceValue(7)));
  const auto group = Helper::getCurrentMeterGroupInfo(req, &host, &info, "/m/g", "s9", true);

  const auto actions = host.actions();
  ASSERT_EQ(actions.size(), 3u);
  const std::vector<std::string> paths = {"/m/g", "/m/g/b", "/m/g/deep/a"};
  for (std::size_t i = 0; i < actions.size(); ++i) {
    EXPECT_EQ(actions[i].path, paths[i]);
    EXPECT_EQ(actions[i].sessionId, "s9");
    EXPECT_EQ(actions[i].action, CCRUD::Read);
    EXPECT_EQ(MeterResources::flagOf(actions[i]), 1) << paths[i];
  }
  EXPECT_EQ(json(*group),
            R"({"guid":"G1","path":"/m/g","label":"PA","meters":[)"
            R"({"value":{"values":{"value":{"doubleValue":1.5,"type":"DOUBLE"}}},"device":{}},)"
            R"({"value":{"values":{"value":{"intValue":7,"type":"INT32"}}},"device":{}}]})");
}

TEST_F(MeterEndpointHelperClassTest, AnUnreadableMeterTakesItsPlaceInTheGroup) {
  host.answer("/m/g", MeterResources::listing({"/m/g/a", "/m/g/gone", "/m/g/c"}));
  host.answer("/m/g/a", Resource(ResourceValue(1)));
  failWithNoResource("/m/g/gone");
  host.answer("/m/g/c", Resource(ResourceValue(3)));
  const auto group = Helper::getCurrentMeterGroupInfo(req, &host, &info, "/m/g", "s1", false);
  ASSERT_EQ(group->meters_size(), 3);
  EXPECT_EQ(json(group->meters(1)), R"({"device":{}})");
  EXPECT_EQ(group->meters(2).value().values().at("value").intvalue().value(), 3);
  EXPECT_EQ(log.count(el::Level::Error, "No resource at /m/g/gone"), 1u);
}

TEST_F(MeterEndpointHelperClassTest, AnUnreadableGroupThrowsTheHostsException) {
  failWithNoResource("/m/g");
  EXPECT_THROW(Helper::getCurrentMeterGroupInfo(req, &host, &info, "/m/g", "s1", false),
               tavelabi::NonExistentResourcePathException);
  EXPECT_EQ(log.count(el::Level::Error, "No resource at"), 0u);
}

TEST_F(MeterEndpointHelperClassTest, AGroupWithoutValueThrowsMapAt) {
  host.answer("/m/g", Resource("label", ResourceValue(std::string("PA"))));
  try {
    Helper::getCurrentMeterGroupInfo(req, &host, &info, "/m/g", "s1", false);
    FAIL() << "no exception";
  } catch (const std::out_of_range& error) {
    EXPECT_STREQ(error.what(), "map::at");
  }
}

TEST_F(MeterEndpointHelperClassTest, ACollectionHoldsItsGroupsInOrderEachWithItsMeters) {
  host.answer("/meters/x/list",
              MeterResources::listing({"/meters/x/two", "/meters/x/one"},
                                      {{"label", "X"}, {"path", "/meters/x/list"}}));
  host.answer("/meters/x/two", MeterResources::listing({"/meters/x/two/m"}, {{"label", "Two"}}));
  host.answer("/meters/x/one", MeterResources::listing({}, {{"label", "One"}}));
  host.answer("/meters/x/two/m", Resource(ResourceValue(true)));
  const auto collection =
      Helper::getCurrentMeterCollectionInfo(req, &host, &info, "/meters/x/list", "s1", false);
  EXPECT_EQ(json(*collection),
            R"({"path":"/meters/x/list","label":"X","groups":[{"label":"Two","meters":[)"
            R"({"value":{"values":{"value":{"boolValue":true,"type":"BOOL"}}},"device":{}}]},)"
            R"({"label":"One"}]})");
  for (const tavelabi::ResourceAction& action : host.actions()) {
    EXPECT_EQ(MeterResources::flagOf(action), 0) << action.path;
  }
  EXPECT_EQ(host.actions().size(), 4u);
}

TEST_F(MeterEndpointHelperClassTest, AnUnreadableCollectionOrOneOfItsGroupsThrows) {
  failWithNoResource("/meters/x/list");
  EXPECT_THROW(
      Helper::getCurrentMeterCollectionInfo(req, &host, &info, "/meters/x/list", "s1", false),
      tavelabi::NonExistentResourcePathException);
  host.answer("/meters/y/list", MeterResources::listing({"/meters/y/g"}));
  failWithNoResource("/meters/y/g");
  EXPECT_THROW(
      Helper::getCurrentMeterCollectionInfo(req, &host, &info, "/meters/y/list", "s1", false),
      tavelabi::NonExistentResourcePathException);
}

// ---- metadata ----

TEST_F(MeterEndpointHelperClassTest, CollectionMetadataIsTheCollectionsOwnKeysWithoutGroups) {
  host.answer("/meters/x/list", MeterResources::listing(
                                    {"/meters/x/g"}, {{"label", "X"}, {"path", "/meters/x/list"}}));
  const auto collection =
      Helper::getCollectionMetaData(req, &host, &info, "/meters/x/list", "s1", true);
  EXPECT_EQ(json(*collection), R"({"path":"/meters/x/list","label":"X"})");
  EXPECT_EQ(MeterResources::flagOf(host.onlyAction()), 1);
  EXPECT_EQ(host.onlyAction().sessionId, "s1");
}

TEST_F(MeterEndpointHelperClassTest, GroupMetadataIsTheGroupsOwnKeysWithoutMeters) {
  host.answer("/m/g", MeterResources::listing({"/m/g/a"},
                                              {{"guid", "G"}, {"label", "PA"}, {"path", "/m/g"}}));
  const auto group = Helper::getMeterGroupMetaData(req, &host, &info, "/m/g", "s1", false);
  EXPECT_EQ(json(*group), R"({"guid":"G","path":"/m/g","label":"PA"})");
  EXPECT_EQ(MeterResources::flagOf(host.onlyAction()), 0);
}

TEST_F(MeterEndpointHelperClassTest, UnreadableMetadataIsAWarningLineAndAnEmptyMessage) {
  failWithNoResource("/meters/x/list");
  failWithNoResource("/m/g");
  const auto collection =
      Helper::getCollectionMetaData(req, &host, &info, "/meters/x/list", "s1", false);
  const auto group = Helper::getMeterGroupMetaData(req, &host, &info, "/m/g", "s1", false);
  EXPECT_EQ(collection->ByteSizeLong(), 0u);
  EXPECT_EQ(group->ByteSizeLong(), 0u);
  EXPECT_EQ(log.count(el::Level::Warning, "Unable to find collection meta-data /meters/x/list"),
            1u);
  EXPECT_EQ(log.count(el::Level::Warning, "Unable to find group meta-data /m/g"), 1u);
  EXPECT_EQ(log.count(el::Level::Error, ""), 0u);
}

// ---- collectionHasMeters ----

TEST_F(MeterEndpointHelperClassTest, HasMetersReadsEveryGroupWithoutTheFlagEvenAfterAHit) {
  host.answer("/meters/x/list", MeterResources::listing({"/g/full", "/g/empty", "/g/also"}));
  host.answer("/g/full", MeterResources::listing({"/g/full/m"}));
  host.answer("/g/empty", MeterResources::listing({}));
  host.answer("/g/also", MeterResources::listing({"/g/also/m"}));
  EXPECT_TRUE(Helper::collectionHasMeters(req, &host, &info, "/meters/x/list", "s1", true));

  const auto actions = host.actions();
  ASSERT_EQ(actions.size(), 4u);
  EXPECT_EQ(MeterResources::flagOf(actions[0]), 1);
  for (std::size_t i = 1; i < actions.size(); ++i) {
    EXPECT_EQ(MeterResources::flagOf(actions[i]), -1) << actions[i].path;
    EXPECT_TRUE(actions[i].resource.values.empty());
    EXPECT_EQ(actions[i].sessionId, "s1");
  }
  EXPECT_EQ(actions[3].path, "/g/also");
}

TEST_F(MeterEndpointHelperClassTest, HasMetersIsFalseWhenEveryGroupIsEmptyOrThereIsNone) {
  host.answer("/meters/x/list", MeterResources::listing({"/g/a", "/g/b"}));
  host.answer("/g/a", MeterResources::listing({}));
  host.answer("/g/b", MeterResources::listing({}));
  host.answer("/meters/none/list", MeterResources::listing({}));
  EXPECT_FALSE(Helper::collectionHasMeters(req, &host, &info, "/meters/x/list", "s1", false));
  EXPECT_FALSE(Helper::collectionHasMeters(req, &host, &info, "/meters/none/list", "s1", false));
}

TEST_F(MeterEndpointHelperClassTest, HasMetersThrowsWhenACollectionOrGroupLacksValue) {
  host.answer("/meters/x/list", MeterResources::listing({"/g/a"}));
  host.answer("/g/a", Resource("label", ResourceValue(std::string("A"))));
  host.answer("/meters/bare/list", Resource("label", ResourceValue(std::string("B"))));
  EXPECT_THROW(Helper::collectionHasMeters(req, &host, &info, "/meters/x/list", "s1", false),
               std::out_of_range);
  EXPECT_THROW(Helper::collectionHasMeters(req, &host, &info, "/meters/bare/list", "s1", false),
               std::out_of_range);
}

}  // namespace
}  // namespace halvor::kelo
