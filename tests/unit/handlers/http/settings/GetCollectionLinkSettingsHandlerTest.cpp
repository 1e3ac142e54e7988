#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kelo/handlers/http/settings/GetCollectionLinkSettingsHandler.h"
#include "support/HandlerTest.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;

Resource page(bool included, const std::string& name) {
  Resource resource;
  resource.values["includeAsDynamicSetting"] = ResourceValue(included);
  resource.values["label"] = ResourceValue("Label " + name);
  resource.values["icon"] = ResourceValue("icon-" + name);
  resource.values["collectionName"] = ResourceValue(name);
  return resource;
}

class GetCollectionLinkSettingsHandlerTest
    : public test::HandlerTest<GetCollectionLinkSettingsHandler> {
 protected:
  web::HttpResponsePtr get() {
    return call(host, web::Get, "/1/api/settings/collections/links", "", "", "s1");
  }
};

TEST_F(GetCollectionLinkSettingsHandlerTest, ListsTheIncludedPagesInTheHostsOrder) {
  host.answer(CCRUD::Command, "/resource/list",
              Resource(ResourceValue(std::vector<std::string>{
                  "/collection/rf", "/collection/hidden", "/collection/audio"})));
  host.answer("/collection/rf", page(true, "rf"));
  host.answer("/collection/hidden", page(false, "hidden"));
  host.answer("/collection/audio", page(true, "audio"));
  const web::HttpResponsePtr resp = get();
  const auto list = host.actionsOn("/resource/list");
  ASSERT_EQ(list.size(), 1u);
  EXPECT_EQ(list[0].action, CCRUD::Command);
  EXPECT_EQ(list[0].resource.values.at("value").getStringValue(), "/collection/**/*");
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->body(),
            R"({"links":[{"label":"Label rf","icon":"icon-rf","collectionName":"rf"},)"
            R"({"label":"Label audio","icon":"icon-audio","collectionName":"audio"}]})");
}

TEST_F(GetCollectionLinkSettingsHandlerTest, APageWithoutOneOfItsKeysFailsWithMapAt) {
  host.answer(CCRUD::Command, "/resource/list",
              Resource(ResourceValue(std::vector<std::string>{"/collection/rf"})));
  Resource partial = page(true, "rf");
  partial.values.erase("icon");
  host.answer("/collection/rf", partial);
  try {
    get();
    FAIL() << "no exception";
  } catch (const std::out_of_range& error) {
    EXPECT_STREQ(error.what(), "map::at");
  }
}

}  // namespace
}  // namespace halvor::kelo
