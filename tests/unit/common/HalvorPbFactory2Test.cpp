#include <google/protobuf/util/message_differencer.h>
#include <google/protobuf/util/time_util.h>
#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "FactorySample.pb.h"
#include "HostValues.h"
#include "halvor/factories/HalvorPbFactory2.h"
#include "halvor/factories/SettingsFactories.h"
#include "kelo/common/JsonOptions.h"
#include "tavelabi/Resource.h"
#include "tavelabi/ResourceValue.h"

namespace halvor::protobuf {
namespace {

using google::protobuf::util::MessageDifferencer;
using kelo::JsonOptions;
using HostValue = tavelabi::ResourceValue;
using kelo::test::HostValues;
using Sample = test::FactorySample;
using SampleFactory = HalvorPbFactory2<Sample>;

ResourceValue intMessage(int number) {
  ResourceValue value;
  value.set_type(ResourceValue::INT32);
  value.mutable_intvalue()->set_value(number);
  return value;
}

// The text of the exception that build throws, or "" when it throws none of that type.
template <typename Exception, typename Factory>
std::string errorOf(Factory& factory, tavelabi::Resource* resource) {
  try {
    factory.build(resource);
  } catch (const Exception& error) {
    return error.what();
  }
  return "";
}

// ---- Resource ----

TEST(HalvorPbFactory2Test, ResourcePathFromResourceWinsOverOverride) {
  HalvorPbFactory2Resource factory;
  factory.overrides().mutable_path()->set_value("/override");
  tavelabi::Resource host("path", HostValue("/from/host"));
  const auto message = factory.build(&host);
  ASSERT_TRUE(message->has_path());
  EXPECT_EQ(message->path().value(), "/from/host");
}

TEST(HalvorPbFactory2Test, ResourcePathFromOverrideWhenHostLacksIt) {
  HalvorPbFactory2Resource factory;
  factory.overrides().mutable_path()->set_value("/override");
  tavelabi::Resource host("other", HostValue(1));
  EXPECT_EQ(factory.build(&host)->path().value(), "/override");
}

TEST(HalvorPbFactory2Test, ResourcePathAbsentWithoutKeyOrOverride) {
  HalvorPbFactory2Resource factory;
  tavelabi::Resource host("other", HostValue(1));
  const auto message = factory.build(&host);
  EXPECT_FALSE(message->has_path());
  EXPECT_EQ(JsonOptions::toJson(*message), "{}");
}

TEST(HalvorPbFactory2Test, ResourceValuesNeverComeFromTheResource) {
  HalvorPbFactory2Resource factory;
  (*factory.overrides().mutable_values())["value"] = intMessage(1);
  (*factory.overrides().mutable_values())["scaledInteger"] = intMessage(2);
  tavelabi::Resource host;
  host.values["value"] = HostValue(99);
  host.values["units"] = HostValue("dB");
  host.values["path"] = HostValue("/p");

  const auto message = factory.build(&host);
  EXPECT_EQ(message->path().value(), "/p");
  ASSERT_EQ(message->values_size(), 2);
  EXPECT_TRUE(MessageDifferencer::Equals(message->values().at("value"), intMessage(1)));
  EXPECT_TRUE(MessageDifferencer::Equals(message->values().at("scaledInteger"), intMessage(2)));
  EXPECT_EQ(message->values().count("units"), 0U);
}

TEST(HalvorPbFactory2Test, ResourceBuildWithoutResourceUsesOverridesAlone) {
  HalvorPbFactory2Resource factory;
  factory.overrides().mutable_path()->set_value("/only");
  (*factory.overrides().mutable_values())["value"] = intMessage(5);
  const auto message = factory.build(nullptr);
  EXPECT_EQ(message->path().value(), "/only");
  EXPECT_TRUE(MessageDifferencer::Equals(message->values().at("value"), intMessage(5)));
  EXPECT_EQ(JsonOptions::toJson(*message),
            R"({"values":{"value":{"intValue":5,"type":"INT32"}},"path":"/only"})");
}

TEST(HalvorPbFactory2Test, ResourcePathOfWrongTypeThrows) {
  HalvorPbFactory2Resource factory;
  tavelabi::Resource host("path", HostValue(3));
  EXPECT_EQ(errorOf<ResourceValueMismatch>(factory, &host),
            "HalvorPbFactory2<halvor.protobuf.Resource>: the key \"path\" holds INT32, but the "
            "field path takes STRING");
}

TEST(HalvorPbFactory2Test, BuildIsVirtualAndLeavesOverridesAlone) {
  HalvorPbFactory2Resource factory;
  factory.overrides().mutable_path()->set_value("/o");
  tavelabi::Resource host("path", HostValue("/h"));
  HalvorPbFactory2<Resource>& base = factory;
  const auto first = base.build(&host);
  const auto second = base.build(nullptr);
  EXPECT_NE(first.get(), second.get());
  EXPECT_EQ(first->path().value(), "/h");
  EXPECT_EQ(second->path().value(), "/o");
  EXPECT_EQ(factory.overrides().path().value(), "/o");
}

// ---- Validations ----

TEST(HalvorPbFactory2Test, ValidationsEveryFieldFromResource) {
  tavelabi::Resource host;
  host.values["minLength"] = HostValue(1);
  host.values["maxLength"] = HostValue(12);
  host.values["minValue"] = HostValues::floatValue(-2.5F);
  host.values["maxValue"] = HostValue(7.25);  // a DOUBLE narrows to the float field
  host.values["pattern"] = HostValue("[a-z]+");
  host.values["required"] = HostValue(false);
  host.values["step"] = HostValue(0.5);
  host.values["unrelated"] = HostValue("ignored");

  HalvorPbFactory2Validations factory;
  const auto message = factory.build(&host);
  EXPECT_EQ(message->minlength().value(), 1);
  EXPECT_EQ(message->maxlength().value(), 12);
  EXPECT_EQ(message->minvalue().value(), -2.5F);
  EXPECT_EQ(message->maxvalue().value(), 7.25F);
  EXPECT_EQ(message->pattern().value(), "[a-z]+");
  ASSERT_TRUE(message->has_required());
  EXPECT_FALSE(message->required().value());
  EXPECT_EQ(message->step().value(), 0.5);
  EXPECT_EQ(JsonOptions::toJson(*message),
            R"({"minLength":1,"minValue":-2.5,"maxLength":12,"maxValue":7.25,)"
            R"("pattern":"[a-z]+","required":false,"step":0.5})");
}

TEST(HalvorPbFactory2Test, ValidationsKeyWinsThenOverrideThenAbsent) {
  HalvorPbFactory2Validations factory;
  factory.overrides().mutable_minlength()->set_value(3);
  factory.overrides().mutable_pattern()->set_value("override");
  tavelabi::Resource host("pattern", HostValue("host"));

  const auto message = factory.build(&host);
  EXPECT_EQ(message->pattern().value(), "host");
  EXPECT_EQ(message->minlength().value(), 3);
  EXPECT_FALSE(message->has_maxlength());
  EXPECT_FALSE(message->has_required());
  EXPECT_FALSE(message->has_step());
}

TEST(HalvorPbFactory2Test, ValidationsWithNothingIsEmpty) {
  HalvorPbFactory2Validations factory;
  tavelabi::Resource empty;
  EXPECT_EQ(factory.build(&empty)->ByteSizeLong(), 0U);
  EXPECT_EQ(JsonOptions::toJson(*factory.build(nullptr)), "{}");
}

TEST(HalvorPbFactory2Test, ValidationsBuildWithoutResourceUsesOverridesAlone) {
  HalvorPbFactory2Validations factory;
  factory.setOverride("step", HostValue(2));
  factory.setOverride("required", HostValue(true));
  const auto message = factory.build(nullptr);
  EXPECT_EQ(message->step().value(), 2.0);
  EXPECT_TRUE(message->required().value());
  EXPECT_FALSE(message->has_minlength());
}

TEST(HalvorPbFactory2Test, ValidationsTypeMismatchThrowsWithClearText) {
  HalvorPbFactory2Validations factory;
  tavelabi::Resource host("minLength", HostValue("3"));
  EXPECT_EQ(errorOf<ResourceValueMismatch>(factory, &host),
            "HalvorPbFactory2<halvor.protobuf.Validations>: the key \"minLength\" holds STRING, "
            "but the field minLength takes INT32");

  tavelabi::Resource floatForInt("maxLength", HostValues::floatValue(3.0F));
  EXPECT_NE(errorOf<ResourceValueMismatch>(factory, &floatForInt), "");
  tavelabi::Resource stringForFloat("minValue", HostValue("1.5"));
  EXPECT_NE(errorOf<ResourceValueMismatch>(factory, &stringForFloat).find("FLOAT, DOUBLE or INT32"),
            std::string::npos);
  tavelabi::Resource unspecified("required", HostValue());
  EXPECT_NE(errorOf<ResourceValueMismatch>(factory, &unspecified).find("UNSPECIFIED"),
            std::string::npos);
}

TEST(HalvorPbFactory2Test, MismatchIsAnInvalidArgument) {
  HalvorPbFactory2Validations factory;
  tavelabi::Resource host("required", HostValue(1));
  EXPECT_THROW(factory.build(&host), std::invalid_argument);
}

TEST(HalvorPbFactory2Test, DoubleBeyondFloatRangeIsRefused) {
  HalvorPbFactory2Validations factory;
  tavelabi::Resource host("maxValue", HostValue(1e300));
  EXPECT_NE(errorOf<ResourceValueMismatch>(factory, &host).find("range of a float"),
            std::string::npos);
  tavelabi::Resource infinite("maxValue", HostValue(std::numeric_limits<double>::infinity()));
  EXPECT_EQ(factory.build(&infinite)->maxvalue().value(), std::numeric_limits<float>::infinity());
}

TEST(HalvorPbFactory2Test, SetOverrideChecksNameAndType) {
  HalvorPbFactory2Validations factory;
  EXPECT_THROW(factory.setOverride("noSuchField", HostValue(1)), std::invalid_argument);
  EXPECT_THROW(factory.setOverride("pattern", HostValue(1)), ResourceValueMismatch);
  EXPECT_FALSE(factory.overrides().has_pattern());
  factory.setOverride("minValue", HostValue(4));
  EXPECT_EQ(factory.overrides().minvalue().value(), 4.0F);
}

// ---- the generic rule on a field of every kind ----

TEST(HalvorPbFactory2Test, EveryReadableKindFromHostValues) {
  tavelabi::Resource host;
  host.values["text"] = HostValue("t");
  host.values["flag"] = HostValue(true);
  host.values["count"] = HostValue(-4);
  host.values["total"] = HostValue(std::numeric_limits<int32_t>::min());
  host.values["size"] = HostValue(7);
  host.values["bigSize"] = HostValue(8);
  host.values["ratio"] = HostValue(3);
  host.values["level"] = HostValues::floatValue(0.25F);
  host.values["blob"] = HostValues::bytesValue({0x00, 0xFF});
  host.values["kind"] = HostValue("SECOND");
  host.values["time"] = HostValue("2024-05-06T07:08:09Z");
  host.values["anyValue"] = HostValue(std::vector<std::string>{"x", "y"});
  host.values["single"] = HostValue(2.5);
  host.values["plainText"] = HostValue("plain");
  host.values["plainNumber"] = HostValue(11);
  host.values["snakeCaseName"] = HostValue("by json name");

  SampleFactory factory;
  const auto sample = factory.build(&host);
  EXPECT_EQ(sample->text().value(), "t");
  EXPECT_TRUE(sample->flag().value());
  EXPECT_EQ(sample->count().value(), -4);
  EXPECT_EQ(sample->total().value(), std::numeric_limits<int32_t>::min());
  EXPECT_EQ(sample->size().value(), 7U);
  EXPECT_EQ(sample->bigsize().value(), 8U);
  EXPECT_EQ(sample->ratio().value(), 3.0F);
  EXPECT_EQ(sample->level().value(), 0.25);
  EXPECT_EQ(sample->blob().value(), std::string("\x00\xFF", 2));
  EXPECT_EQ(sample->kind(), Sample::SECOND);
  EXPECT_EQ(google::protobuf::util::TimeUtil::ToString(sample->time()), "2024-05-06T07:08:09Z");
  EXPECT_EQ(sample->anyvalue().type(), ResourceValue::LIST_VALUE);
  ASSERT_EQ(sample->anyvalue().listvalue_size(), 2);
  EXPECT_EQ(sample->anyvalue().listvalue(1).stringvalue().value(), "y");
  ASSERT_EQ(sample->single().values_size(), 1);
  EXPECT_EQ(sample->single().values().at("value").doublevalue().value(), 2.5);
  EXPECT_EQ(sample->plaintext(), "plain");
  EXPECT_EQ(sample->plainnumber(), 11);
  EXPECT_EQ(sample->snake_case_name(), "by json name");
}

TEST(HalvorPbFactory2Test, EnumByNumberAndUnknownNameGivesZero) {
  SampleFactory factory;
  tavelabi::Resource byNumber("kind", HostValue(1));
  EXPECT_EQ(factory.build(&byNumber)->kind(), Sample::FIRST);
  tavelabi::Resource unknown("kind", HostValue("THIRD"));
  factory.overrides().set_kind(Sample::SECOND);
  EXPECT_EQ(factory.build(&unknown)->kind(), Sample::UNKNOWN_KIND);
  tavelabi::Resource wrong("kind", HostValue(true));
  EXPECT_THROW(factory.build(&wrong), ResourceValueMismatch);
}

TEST(HalvorPbFactory2Test, BadTimestampAndNegativeUnsignedThrow) {
  SampleFactory factory;
  tavelabi::Resource badTime("time", HostValue("yesterday"));
  EXPECT_NE(errorOf<ResourceValueMismatch>(factory, &badTime).find("yesterday"), std::string::npos);
  tavelabi::Resource negative("size", HostValue(-1));
  EXPECT_NE(errorOf<ResourceValueMismatch>(factory, &negative).find("not negative"),
            std::string::npos);
  tavelabi::Resource textForBytes("blob", HostValue("abc"));
  EXPECT_NE(errorOf<ResourceValueMismatch>(factory, &textForBytes).find("UINT8_ARRAY"),
            std::string::npos);
}

TEST(HalvorPbFactory2Test, UnreadableFieldsKeepTheirOverride) {
  SampleFactory factory;
  factory.overrides().mutable_limits()->mutable_step()->set_value(1.0);
  factory.overrides().add_names("kept");
  (*factory.overrides().mutable_counts())["a"] = 1;
  tavelabi::Resource host;
  host.values["limits"] = HostValue(HostValue::Map{{"step", HostValue(9.0)}});
  host.values["names"] = HostValue(std::vector<std::string>{"from host"});
  host.values["counts"] = HostValue(HostValue::Map{{"b", HostValue(2)}});

  const auto sample = factory.build(&host);
  EXPECT_EQ(sample->limits().step().value(), 1.0);
  ASSERT_EQ(sample->names_size(), 1);
  EXPECT_EQ(sample->names(0), "kept");
  EXPECT_EQ(sample->counts().size(), 1U);
  EXPECT_EQ(sample->counts().at("a"), 1);
}

TEST(HalvorPbFactory2Test, PlainScalarOverrideAtZeroIsNoOverride) {
  SampleFactory factory;
  factory.overrides().set_plainnumber(0);
  EXPECT_EQ(factory.build(nullptr)->ByteSizeLong(), 0U);
  factory.overrides().set_plainnumber(5);
  tavelabi::Resource host("plainNumber", HostValue(0));
  EXPECT_EQ(factory.build(&host)->plainnumber(), 0);
}

// ---- rules of single messages ----

TEST(HalvorPbFactory2Test, RuleKeysFirstPresentWins) {
  static const FactoryRules rules = FactoryRules().readFrom("flag", {"value", "active"});
  SampleFactory factory(rules);
  tavelabi::Resource both;
  both.values["value"] = HostValue(false);
  both.values["active"] = HostValue(true);
  both.values["flag"] = HostValue(true);  // the JSON name is no longer a key of the field
  EXPECT_FALSE(factory.build(&both)->flag().value());
  tavelabi::Resource second("active", HostValue(true));
  EXPECT_TRUE(factory.build(&second)->flag().value());
  tavelabi::Resource own("flag", HostValue(true));
  EXPECT_FALSE(factory.build(&own)->has_flag());
}

TEST(HalvorPbFactory2Test, RuleOverrideOnlyIgnoresTheKey) {
  static const FactoryRules rules = FactoryRules().keepOverride("text");
  SampleFactory factory(rules);
  factory.overrides().mutable_text()->set_value("mine");
  tavelabi::Resource host("text", HostValue("theirs"));
  EXPECT_EQ(factory.build(&host)->text().value(), "mine");
}

TEST(HalvorPbFactory2Test, RuleKeysRequiredThrowsLikeMapAt) {
  static const FactoryRules rules = FactoryRules().requireKeys();
  SampleFactory factory(rules);
  tavelabi::Resource partial("text", HostValue("t"));
  EXPECT_EQ(errorOf<std::out_of_range>(factory, &partial), "map::at");
  EXPECT_NO_THROW(factory.build(nullptr));
}

TEST(HalvorPbFactory2Test, RuleReaderFillsItsField) {
  static const FactoryRules rules =
      FactoryRules()
          .readWith("count",
                    [](google::protobuf::Message& message, const google::protobuf::FieldDescriptor&,
                       const HostValue& value) {
                      auto& sample = dynamic_cast<Sample&>(message);
                      sample.mutable_count()->set_value(std::stoi(value.getStringValue()));
                    })
          .readWith("names", [](google::protobuf::Message& message,
                                const google::protobuf::FieldDescriptor&, const HostValue& value) {
            auto& sample = dynamic_cast<Sample&>(message);
            for (const HostValue& name : value.getListValue())
              sample.add_names(name.getStringValue());
          });
  SampleFactory factory(rules);
  factory.overrides().add_names("replaced");
  tavelabi::Resource host;
  host.values["count"] = HostValue("42");
  host.values["names"] = HostValue(std::vector<std::string>{"a", "b"});
  const auto sample = factory.build(&host);
  EXPECT_EQ(sample->count().value(), 42);
  ASSERT_EQ(sample->names_size(), 2);
  EXPECT_EQ(sample->names(0), "a");
}

TEST(HalvorPbFactory2Test, MismatchLeavesOverrideUntouched) {
  SampleFactory factory;
  factory.setOverride("time", HostValue("2020-01-01T00:00:00Z"));
  EXPECT_THROW(factory.setOverride("time", HostValue("bad")), ResourceValueMismatch);
  EXPECT_EQ(factory.overrides().time().seconds(), 1577836800);
  EXPECT_THROW(factory.setOverride("limits", HostValue(1)), std::logic_error);
}

TEST(HalvorPbFactory2Test, ReleaseBuildsWhatBuildBuildsAndEmptiesTheOverrides) {
  tavelabi::Resource host;
  host.values["text"] = HostValue(std::string("from host"));
  host.values["count"] = HostValue(7);
  SampleFactory copying;
  SampleFactory moving;
  for (SampleFactory* factory : {&copying, &moving}) {
    factory->overrides().mutable_text()->set_value("override");
    factory->overrides().mutable_level()->set_value(2.5);
    factory->overrides().add_names("kept");
  }

  const auto built = copying.build(&host);
  const auto released = moving.release(&host);
  EXPECT_TRUE(MessageDifferencer::Equals(*built, *released)) << released->DebugString();
  EXPECT_EQ(released->text().value(), "from host");
  EXPECT_EQ(released->level().value(), 2.5);
  EXPECT_EQ(copying.overrides().names_size(), 1);
  EXPECT_EQ(moving.overrides().ByteSizeLong(), 0U);
}

}  // namespace
}  // namespace halvor::protobuf
