#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "halvor/factories/ProcessorFactories.h"
#include "tavelabi/Resource.h"

namespace halvor::protobuf {
namespace {

using tavelabi::Resource;
using tavelabi::ResourceValue;

Resource fullPreset() {
  Resource preset("name", ResourceValue("Night"));
  for (const char* key : {"isFactory", "isLessMoreAvailable", "isLessMoreUnvailable",
                          "isLowLatency", "isModifiable", "isMultiband", "isTwoband", "isUser"}) {
    preset.values[key] = ResourceValue(std::string(key) == "isUser");
  }
  return preset;
}

TEST(ProcessorFactoriesTest, APresetTakesEveryKeyOfTheResource) {
  Resource preset = fullPreset();
  HalvorPbFactory2OrbanPresetName factory;
  const auto message = factory.build(&preset);
  EXPECT_EQ(message->name().value(), "Night");
  EXPECT_TRUE(message->isuser().value());
  ASSERT_TRUE(message->has_islessmoreunvailable());
  EXPECT_FALSE(message->islessmoreunvailable().value());
  EXPECT_TRUE(message->has_istwoband());
}

TEST(ProcessorFactoriesTest, EveryKeyOfAPresetIsRequiredEvenWithAnOverride) {
  for (const char* key : {"name", "isFactory", "isLessMoreAvailable", "isLessMoreUnvailable",
                          "isLowLatency", "isModifiable", "isMultiband", "isTwoband", "isUser"}) {
    Resource preset = fullPreset();
    preset.values.erase(key);
    HalvorPbFactory2OrbanPresetName factory;
    factory.overrides().mutable_isuser()->set_value(true);
    factory.overrides().mutable_name()->set_value("fallback");
    try {
      factory.build(&preset);
      ADD_FAILURE() << "a preset without " << key << " was built";
    } catch (const std::out_of_range& error) {
      EXPECT_STREQ(error.what(), "map::at") << key;
    }
  }
}

TEST(ProcessorFactoriesTest, KeysBeyondThePresetsAreLeftOut) {
  Resource preset = fullPreset();
  preset.values["set_value"] = ResourceValue("Drive");
  HalvorPbFactory2OrbanPresetName factory;
  EXPECT_EQ(factory.build(&preset)->name().value(), "Night");
}

TEST(ProcessorFactoriesTest, WithoutAResourceTheOverridesAloneFillThePreset) {
  HalvorPbFactory2OrbanPresetName factory;
  factory.overrides().mutable_name()->set_value("Drive");
  const auto message = factory.build(nullptr);
  EXPECT_EQ(message->name().value(), "Drive");
  EXPECT_FALSE(message->has_isuser());
}

TEST(ProcessorFactoriesTest, AControlIsFilledByTheGenericRule) {
  Resource control("label", ResourceValue("Bass"));
  control.values["value"] = ResourceValue(3);
  HalvorPbFactory2OrbanControl factory;
  const auto message = factory.build(&control);
  EXPECT_EQ(message->label().value(), "Bass");
  EXPECT_EQ(message->value().value(), 3);
  Resource bare;
  EXPECT_FALSE(factory.build(&bare)->has_label());
}

}  // namespace
}  // namespace halvor::protobuf
