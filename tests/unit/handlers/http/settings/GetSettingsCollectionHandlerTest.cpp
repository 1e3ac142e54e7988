#include <gtest/gtest.h>

#include <string>

#include "halvor/protobuf/Settings.pb.h"
#include "kelo/common/JsonOptions.h"
#include "kelo/handlers/http/settings/GetSettingsCollectionHandler.h"
#include "support/HandlerTest.h"
#include "tavelabi/Exceptions.h"
#include "unit/handlers/http/settings/SettingResources.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;
using test::SettingResources;
using Map = ResourceValue::Map;

class GetSettingsCollectionHandlerTest : public test::HandlerTest<GetSettingsCollectionHandler> {
 protected:
  web::HttpResponsePtr get(const std::string& name) {
    return callMember(&GetSettingsCollectionHandler::getSetting,
                      test::makeRequest(web::Get, "/1/api/settingcollections/" + name, "", ""),
                      "s1", name);
  }

  protobuf::QuoSettingCollection getParsed(const std::string& name) {
    const web::HttpResponsePtr resp = get(name);
    EXPECT_EQ(resp->statusCode(), web::k200OK);
    EXPECT_EQ(resp->contentType(), web::CT_APPLICATION_JSON);
    protobuf::QuoSettingCollection parsed;
    EXPECT_TRUE(JsonOptions::fromJson(std::string(resp->body()), parsed).ok()) << resp->body();
    return parsed;
  }

  void unknown(const std::string& path) {
    host.fail(path, [path] {
      throw tavelabi::NonExistentResourcePathException("No resource at " + path);
    });
  }
};

TEST_F(GetSettingsCollectionHandlerTest, AnEmptySettingsListAnswersTheNameAndNoSettings) {
  host.answer("/collection/rf", SettingResources::collection({}));
  const web::HttpResponsePtr resp = get("rf");
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->body(), R"({"name":"rf"})");
  EXPECT_EQ(host.onlyAction().action, CCRUD::Read);
  EXPECT_EQ(host.onlyAction().path, "/collection/rf");
}

TEST_F(GetSettingsCollectionHandlerTest, SettingsUnknownToTheHostAreLeftOutWithoutAWord) {
  host.answer("/collection/rf",
              SettingResources::collection({SettingResources::entry("/a", "", "A", "BASIC"),
                                            SettingResources::entry("/b", "", "B", "BASIC")}));
  unknown("/a");
  unknown("/b");
  EXPECT_EQ(get("rf")->body(), R"({"name":"rf"})");
}

TEST_F(GetSettingsCollectionHandlerTest, ASettingCarriesItsValueDisplayKeysLimitsAndDefaults) {
  host.answer("/collection/rf", SettingResources::collection(
                                    {SettingResources::entry("/rf/power", "", "Power", "BASIC")}));
  Resource setting(ResourceValue(1000));
  setting.values["units"] = ResourceValue("W");
  setting.values["toFixedDigits"] = ResourceValue(1);
  setting.values["minValue"] = ResourceValue(0);
  setting.values["maxValue"] = ResourceValue(1100.5);
  setting.values["guid"] = ResourceValue("rf-power");
  setting.values["unrelated"] = ResourceValue("x");
  host.answer("/rf/power", setting);
  const auto parsed = getParsed("rf");
  ASSERT_EQ(parsed.settings_size(), 1);
  const protobuf::QuoSetting& one = parsed.settings(0);
  EXPECT_EQ(one.guid().value(), "rf-power");
  EXPECT_EQ(one.label().value(), "Power");
  EXPECT_EQ(one.type(), protobuf::QuoSetting::BASIC);
  const auto& resource = one.settingresource().resource();
  EXPECT_EQ(resource.path().value(), "/rf/power");
  EXPECT_EQ(resource.values().at("value").intvalue().value(), 1000);
  EXPECT_TRUE(resource.values().at("scaledInteger").boolvalue().value());
  EXPECT_EQ(resource.values().at("units").stringvalue().value(), "W");
  EXPECT_EQ(resource.values().at("toFixedDigits").intvalue().value(), 1);
  EXPECT_EQ(resource.values().count("unrelated"), 0u);
  EXPECT_EQ(resource.values().count("scale"), 0u);
  EXPECT_FLOAT_EQ(one.settingresource().validations().maxvalue().value(), 1100.5f);
  EXPECT_FLOAT_EQ(one.settingresource().validations().minvalue().value(), 0.0f);
  EXPECT_FALSE(one.settingresource().validations().has_pattern());
  EXPECT_FALSE(one.has_monitorresource());
  EXPECT_FALSE(one.transitioning().value());
  EXPECT_EQ(one.progress().value(), 100);
  EXPECT_TRUE(one.has_erroroccurred());
  EXPECT_FALSE(one.erroroccurred().value());
  EXPECT_TRUE(one.has_errormessage());
  EXPECT_EQ(one.errormessage().value(), "");
}

TEST_F(GetSettingsCollectionHandlerTest, APathKeyOfTheResourceReplacesTheReadPath) {
  host.answer("/collection/c",
              SettingResources::collection({SettingResources::entry("/x", "", "X", "BASIC")}));
  Resource setting(ResourceValue(1));
  setting.values["path"] = ResourceValue("/elsewhere");
  host.answer("/x", setting);
  EXPECT_EQ(getParsed("c").settings(0).settingresource().resource().path().value(), "/elsewhere");
}

TEST_F(GetSettingsCollectionHandlerTest, AMonitorGetsScaledIntegerAndNoToFixedDigits) {
  host.answer("/collection/c",
              SettingResources::collection({SettingResources::entry("/x", "/m", "X", "MONITORED"),
                                            SettingResources::entry("/y", "", "Y", "BASIC")}));
  host.answer("/x", Resource(ResourceValue(2)));
  host.answer("/y", Resource(ResourceValue(3)));
  Resource monitor(ResourceValue(2.5));
  monitor.values["toFixedDigits"] = ResourceValue(2);
  monitor.values["digitsToDisplay"] = ResourceValue(1);
  host.answer("/m", monitor);
  const auto parsed = getParsed("c");
  ASSERT_EQ(parsed.settings_size(), 2);
  const auto& reading = parsed.settings(0).monitorresource();
  EXPECT_EQ(reading.path().value(), "/m");
  EXPECT_TRUE(reading.values().at("scaledInteger").boolvalue().value());
  EXPECT_DOUBLE_EQ(reading.values().at("value").doublevalue().value(), 2.5);
  EXPECT_EQ(reading.values().at("digitsToDisplay").intvalue().value(), 1);
  EXPECT_EQ(reading.values().count("toFixedDigits"), 0u);
  EXPECT_FALSE(parsed.settings(1).has_monitorresource());
}

TEST_F(GetSettingsCollectionHandlerTest, AnUnknownMonitorFailsTheWholePage) {
  host.answer("/collection/c", SettingResources::collection(
                                   {SettingResources::entry("/x", "/m", "X", "MONITORED")}));
  host.answer("/x", Resource(ResourceValue(2)));
  unknown("/m");
  EXPECT_THROW(get("c"), tavelabi::NonExistentResourcePathException);
}

TEST_F(GetSettingsCollectionHandlerTest, OnlyASingleSelectCarriesItsOptions) {
  ResourceValue single = SettingResources::entry("/s", "", "S", "SINGLE_SELECT");
  ResourceValue multi = SettingResources::entry("/m", "", "M", "MULTI_SELECT");
  Map options{{"a", "A"}, {"b", "B"}};
  Map singleMap = single.getMapValue();
  singleMap["options"] = ResourceValue(options);
  Map multiMap = multi.getMapValue();
  multiMap["options"] = ResourceValue(options);
  host.answer("/collection/c",
              SettingResources::collection({ResourceValue(singleMap), ResourceValue(multiMap)}));
  host.answer("/s", Resource(ResourceValue("a")));
  host.answer("/m", Resource(ResourceValue("b")));
  const auto parsed = getParsed("c");
  ASSERT_EQ(parsed.settings_size(), 2);
  const auto& singleValues = parsed.settings(0).settingresource().resource().values();
  EXPECT_EQ(singleValues.at("options").mapvalue().at("b").stringvalue().value(), "B");
  EXPECT_EQ(parsed.settings(1).type(), protobuf::QuoSetting::MULTI_SELECT);
  EXPECT_EQ(parsed.settings(1).settingresource().resource().values().count("options"), 0u);
}

TEST_F(GetSettingsCollectionHandlerTest, ASingleSelectWithoutOptionsFailsWithMapAt) {
  host.answer("/collection/c", SettingResources::collection(
                                   {SettingResources::entry("/s", "", "S", "SINGLE_SELECT")}));
  host.answer("/s", Resource(ResourceValue("a")));
  try {
    get("c");
    FAIL() << "no exception";
  } catch (const std::out_of_range& error) {
    EXPECT_STREQ(error.what(), "map::at");
  }
}

TEST_F(GetSettingsCollectionHandlerTest, AnUnknownTypeIsUndefinedAndLeftOutOfTheJson) {
  host.answer("/collection/c",
              SettingResources::collection({SettingResources::entry("/x", "", "X", "SLIDER")}));
  host.answer("/x", Resource(ResourceValue(1)));
  const web::HttpResponsePtr resp = get("c");
  // The setting's own members begin with its resource: no "type" before it.
  EXPECT_NE(resp->body().find(R"("settings":[{"settingResource":)"), std::string::npos)
      << resp->body();
  EXPECT_EQ(getParsed("c").settings(0).type(), protobuf::QuoSetting::UNDEFINED);
}

TEST_F(GetSettingsCollectionHandlerTest, ATransitionWithoutProgressShows100) {
  host.answer("/collection/c",
              SettingResources::collection({SettingResources::entry("/x", "", "X", "BASIC"),
                                            SettingResources::entry("/y", "", "Y", "BASIC")}));
  Resource moving(ResourceValue(1));
  moving.values["transitioning"] = ResourceValue(true);
  host.answer("/x", moving);
  Resource halfway(ResourceValue(1));
  halfway.values["transitioning"] = ResourceValue(true);
  halfway.values["progress"] = ResourceValue(40);
  host.answer("/y", halfway);
  const auto parsed = getParsed("c");
  EXPECT_TRUE(parsed.settings(0).transitioning().value());
  EXPECT_EQ(parsed.settings(0).progress().value(), 100);
  EXPECT_TRUE(parsed.settings(1).transitioning().value());
  EXPECT_EQ(parsed.settings(1).progress().value(), 40);
}

TEST_F(GetSettingsCollectionHandlerTest, AnErrorMessageShowsOnlyWhenAnErrorOccurred) {
  host.answer("/collection/c",
              SettingResources::collection({SettingResources::entry("/x", "", "X", "BASIC"),
                                            SettingResources::entry("/y", "", "Y", "BASIC")}));
  Resource quiet(ResourceValue(1));
  quiet.values["errorOccurred"] = ResourceValue(false);
  quiet.values["errorMessage"] = ResourceValue("old failure");
  host.answer("/x", quiet);
  Resource failed(ResourceValue(1));
  failed.values["errorOccurred"] = ResourceValue(true);
  failed.values["errorMessage"] = ResourceValue("PLL did not lock");
  host.answer("/y", failed);
  const auto parsed = getParsed("c");
  EXPECT_FALSE(parsed.settings(0).erroroccurred().value());
  EXPECT_EQ(parsed.settings(0).errormessage().value(), "");
  EXPECT_TRUE(parsed.settings(1).erroroccurred().value());
  EXPECT_EQ(parsed.settings(1).errormessage().value(), "PLL did not lock");
}

TEST_F(GetSettingsCollectionHandlerTest, ASettingWithoutValueFailsThePage) {
  host.answer("/collection/c",
              SettingResources::collection({SettingResources::entry("/x", "", "X", "BASIC")}));
  host.answer("/x", Resource("units", ResourceValue("W")));
  try {
    get("c");
    FAIL() << "no exception";
  } catch (const std::out_of_range& error) {
    EXPECT_STREQ(error.what(), "Setting /x has no value");
  }
}

TEST_F(GetSettingsCollectionHandlerTest, MissingSettingsOrEntryKeysFailWithMapAt) {
  host.answer("/collection/none", Resource("label", ResourceValue("x")));
  EXPECT_THROW(get("none"), std::out_of_range);
  Map partial{{"settingResource", "/x"}, {"label", "X"}, {"type", "BASIC"}};
  host.answer("/collection/partial", SettingResources::collection({ResourceValue(partial)}));
  try {
    get("partial");
    FAIL() << "no exception";
  } catch (const std::out_of_range& error) {
    EXPECT_STREQ(error.what(), "map::at");
  }
}

TEST_F(GetSettingsCollectionHandlerTest, DependentLimitsAreKeyedByTheOtherSettingsValue) {
  Map entry = SettingResources::entry("/gain", "", "Gain", "BASIC", "Input source").getMapValue();
  entry["dependentValidation"] =
      ResourceValue(Map{{"analog", ResourceValue(Map{{"minValue", -12.0}, {"maxValue", 12.0}})},
                        {"aes", ResourceValue(Map{{"minValue", -6.0}})}});
  host.answer("/collection/c", SettingResources::collection({ResourceValue(entry)}));
  host.answer("/gain", Resource(ResourceValue(0.0)));
  const auto parsed = getParsed("c");
  const auto& one = parsed.settings(0);
  EXPECT_EQ(one.dependentvalidationlabel().value(), "Input source");
  EXPECT_FLOAT_EQ(one.dependentvalidation().at("analog").maxvalue().value(), 12.0f);
  EXPECT_FLOAT_EQ(one.dependentvalidation().at("aes").minvalue().value(), -6.0f);
  EXPECT_FALSE(one.dependentvalidation().at("aes").has_maxvalue());
}

TEST_F(GetSettingsCollectionHandlerTest, ADependentLabelWithoutLimitsFailsWithMapAt) {
  host.answer("/collection/c", SettingResources::collection(
                                   {SettingResources::entry("/gain", "", "Gain", "BASIC", "Src")}));
  EXPECT_THROW(get("c"), std::out_of_range);
}

TEST_F(GetSettingsCollectionHandlerTest, SettingsKeepTheHostsOrder) {
  host.answer("/collection/c",
              SettingResources::collection({SettingResources::entry("/z", "", "Z", "BASIC"),
                                            SettingResources::entry("/a", "", "A", "BASIC")}));
  host.answer("/z", Resource(ResourceValue(1)));
  host.answer("/a", Resource(ResourceValue(2)));
  const auto parsed = getParsed("c");
  ASSERT_EQ(parsed.settings_size(), 2);
  EXPECT_EQ(parsed.settings(0).label().value(), "Z");
  EXPECT_EQ(parsed.settings(1).label().value(), "A");
}

}  // namespace
}  // namespace halvor::kelo
