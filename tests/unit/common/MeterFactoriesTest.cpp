#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "HostValues.h"
#include "RandomMessages.h"
#include "halvor/factories/FactoryCore.h"
#include "halvor/factories/MonitoringFactories.h"
#include "tavelabi/Resource.h"
#include "tavelabi/ResourceValue.h"

namespace halvor::protobuf {
namespace {

using HostValue = tavelabi::ResourceValue;
using kelo::test::HostValues;
using kelo::test::RandomMessages;

// A message's bytes with map entries in key order, so that equal messages give equal bytes
// (NaN included, which a field-by-field comparison would call different from itself).
std::string bytesOf(const google::protobuf::Message& message) {
  std::string bytes;
  {
    google::protobuf::io::StringOutputStream stream(&bytes);
    google::protobuf::io::CodedOutputStream coded(&stream);
    coded.SetSerializationDeterministic(true);
    message.SerializeToCodedStream(&coded);
  }
  return bytes;
}

// What one build gave: the message's bytes, or the text of the ResourceValueMismatch it threw.
struct Outcome {
  std::string bytes;
  std::string mismatch;
};

// The generic walk over the descriptor, as every factory without a specialisation builds.
template <typename Message>
Outcome genericBuild(const Message& overrides, const FactoryRules& rules,
                     const tavelabi::Resource& resource) {
  Message message(overrides);
  try {
    FactoryCore::takeFromResource(message, rules, resource);
  } catch (const ResourceValueMismatch& error) {
    return {"", error.what()};
  }
  return {bytesOf(message), ""};
}

template <typename Message>
Outcome factoryBuild(const Message& overrides, const FactoryRules& rules,
                     tavelabi::Resource& resource) {
  HalvorPbFactory2<Message> factory(rules);
  factory.overrides() = overrides;
  try {
    return {bytesOf(*factory.build(&resource)), ""};
  } catch (const ResourceValueMismatch& error) {
    return {"", error.what()};
  }
}

// The same build by release(), which moves the overrides instead of copying them.
template <typename Message>
Outcome factoryRelease(const Message& overrides, const FactoryRules& rules,
                       tavelabi::Resource& resource) {
  HalvorPbFactory2<Message> factory(rules);
  factory.overrides() = overrides;
  try {
    return {bytesOf(*factory.release(&resource)), ""};
  } catch (const ResourceValueMismatch& error) {
    return {"", error.what()};
  }
}

// Host values of every type, the ones a meter's fields take and the ones they refuse.
HostValue randomHostValue(RandomMessages& random) {
  switch (random.below(9)) {
    case 0:
      return HostValue(random.text());
    case 1:
      return HostValue(random.number64());
    case 2:
      return HostValues::floatValue(random.number32());
    case 3:
      return HostValue(static_cast<int>(random.integer() % 100000));
    case 4:
      return HostValue(random.below(2) == 0);
    case 5:
      return HostValues::bytesValue({1, 2, static_cast<uint8_t>(random.below(256))});
    case 6:
      return HostValue(std::vector<std::string>{random.text(), random.text()});
    case 7:
      return HostValue(HostValue::Map{{"value", HostValue(random.text())}});
    default:
      return HostValue();
  }
}

const std::vector<std::string>& meterKeys() {
  static const std::vector<std::string> keys = {
      "guid",   "path",   "value",  "units",      "min",      "max",  "label", "digitsToDisplay",
      "device", "meters", "groups", "deviceName", "deviceId", "other"};
  return keys;
}

// A resource with some of the keys of the meter tree, each of a random type; most often the
// type the field takes, so that whole builds succeed as well as fail.
tavelabi::Resource randomResource(RandomMessages& random) {
  tavelabi::Resource resource;
  for (const std::string& key : meterKeys()) {
    if (random.below(3) == 0) continue;
    if (random.below(4) != 0) {
      if (key == "min" || key == "max") {
        resource.values[key] = HostValue(random.number64());
        continue;
      }
      if (key == "digitsToDisplay") {
        resource.values[key] = HostValue(random.below(10));
        continue;
      }
      if (key != "value") {
        resource.values[key] = HostValue(random.text());
        continue;
      }
    }
    resource.values[key] = randomHostValue(random);
  }
  return resource;
}

// The rules the factories meet: the generic rule, fields kept to their override (the meter
// helper keeps "value"), and rules the direct reading leaves to the generic walk.
std::vector<FactoryRules> someRules() {
  return {
      FactoryRules(),
      FactoryRules().keepOverride("value"),
      FactoryRules().keepOverride("guid").keepOverride("min").keepOverride("label"),
      FactoryRules().readFrom("label", {"other", "label"}),
      FactoryRules().requireKeys(),
  };
}

template <typename Message>
void expectSameAsGenericOnRandomResources(unsigned seed) {
  RandomMessages random(seed);
  const std::vector<FactoryRules> rules = someRules();
  int mismatches = 0;
  int built = 0;
  for (int round = 0; round < 3000; ++round) {
    Message overrides;
    random.fill(overrides);
    tavelabi::Resource resource = randomResource(random);
    const FactoryRules& rule = rules[round % rules.size()];
    if (rule.keysRequired) {
      // A missing key throws std::out_of_range in both ways; only complete resources compare.
      for (const std::string& key : meterKeys()) {
        if (resource.values.count(key) == 0) resource.values[key] = HostValue(random.text());
      }
    }
    const Outcome expected = genericBuild(overrides, rule, resource);
    const Outcome built1 = factoryBuild(overrides, rule, resource);
    const Outcome built2 = factoryRelease(overrides, rule, resource);
    ASSERT_EQ(built1.mismatch, expected.mismatch) << "round " << round;
    ASSERT_EQ(built1.bytes, expected.bytes) << "round " << round;
    ASSERT_EQ(built2.mismatch, expected.mismatch) << "round " << round;
    ASSERT_EQ(built2.bytes, expected.bytes) << "round " << round;
    (expected.mismatch.empty() ? built : mismatches) += 1;
  }
  // Both outcomes must have been compared often, or the comparison proves little.
  EXPECT_GT(built, 300);
  EXPECT_GT(mismatches, 300);
}

TEST(MeterFactoriesTest, AMeterIsBuiltAsTheGenericWalkBuildsItFromRandomResourcesAndOverrides) {
  expectSameAsGenericOnRandomResources<Meter>(20261123);
}

TEST(MeterFactoriesTest, AMeterGroupIsBuiltAsTheGenericWalkBuildsItFromRandomResources) {
  expectSameAsGenericOnRandomResources<MeterGroup>(7);
}

TEST(MeterFactoriesTest, AMeterCollectionIsBuiltAsTheGenericWalkBuildsItFromRandomResources) {
  expectSameAsGenericOnRandomResources<MeterCollection>(11);
}

// Every field read from the resource, with every host type: the same error text, or the same
// message, as the generic walk.
template <typename Message>
void expectSameAsGenericForEveryTypeOfEveryKey() {
  RandomMessages random(3);
  std::vector<HostValue> values = {HostValue("text"),
                                   HostValue(2.5),
                                   HostValues::floatValue(1.5f),
                                   HostValue(7),
                                   HostValue(true),
                                   HostValues::bytesValue({1, 2}),
                                   HostValue(std::vector<std::string>{"a"}),
                                   HostValue(HostValue::Map{{"value", HostValue(1)}}),
                                   HostValue()};
  int mismatches = 0;
  for (const std::string& key : meterKeys()) {
    for (const HostValue& value : values) {
      tavelabi::Resource resource;
      resource.values[key] = value;
      Message overrides;
      random.fill(overrides);
      const Outcome expected = genericBuild(overrides, FactoryRules(), resource);
      const Outcome built = factoryBuild(overrides, FactoryRules(), resource);
      EXPECT_EQ(built.mismatch, expected.mismatch)
          << key << " " << tavelabi::toString(value.getType());
      EXPECT_EQ(built.bytes, expected.bytes) << key << " " << tavelabi::toString(value.getType());
      if (!expected.mismatch.empty()) ++mismatches;
    }
  }
  EXPECT_GT(mismatches, 0);
}

TEST(MeterFactoriesTest, EveryTypeMismatchOfAMeterKeyGivesTheGenericText) {
  expectSameAsGenericForEveryTypeOfEveryKey<Meter>();
}

TEST(MeterFactoriesTest, EveryTypeMismatchOfAMeterGroupKeyGivesTheGenericText) {
  expectSameAsGenericForEveryTypeOfEveryKey<MeterGroup>();
}

TEST(MeterFactoriesTest, EveryTypeMismatchOfAMeterCollectionKeyGivesTheGenericText) {
  expectSameAsGenericForEveryTypeOfEveryKey<MeterCollection>();
}

TEST(MeterFactoriesTest, AMeterTakesItsKeysOverItsOverridesAndKeepsTheRest) {
  HalvorPbFactory2Meter factory;
  factory.overrides().mutable_label()->set_value("override label");
  factory.overrides().mutable_units()->set_value("dBm");
  factory.overrides().mutable_device()->mutable_name()->set_value("PA1");
  tavelabi::Resource host("label", HostValue("Forward power"));
  host.addValue("min", HostValue(0));
  host.addValue("max", HostValue(1200.5));
  host.addValue("digitsToDisplay", HostValue(1));
  host.addValue("value", HostValue(812.25));
  const auto meter = factory.build(&host);
  EXPECT_EQ(meter->label().value(), "Forward power");
  EXPECT_EQ(meter->units().value(), "dBm");
  EXPECT_EQ(meter->min().value(), 0.0);
  EXPECT_EQ(meter->max().value(), 1200.5);
  EXPECT_EQ(meter->digitstodisplay().value(), 1);
  EXPECT_EQ(meter->value().values().at("value").doublevalue().value(), 812.25);
  EXPECT_EQ(meter->device().name().value(), "PA1");
  EXPECT_FALSE(meter->has_guid());
}

TEST(MeterFactoriesTest, AMeterWithATextForItsMinimumIsRefusedWithTheKeyAndTheField) {
  tavelabi::Resource host("min", HostValue("low"));
  try {
    HalvorPbFactory2Meter().build(&host);
    FAIL() << "no ResourceValueMismatch";
  } catch (const ResourceValueMismatch& error) {
    EXPECT_STREQ(error.what(),
                 "HalvorPbFactory2<halvor.protobuf.Meter>: the key \"min\" holds STRING, but the "
                 "field min takes FLOAT, DOUBLE or INT32");
  }
}

}  // namespace
}  // namespace halvor::protobuf
