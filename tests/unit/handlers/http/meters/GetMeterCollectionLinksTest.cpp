#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "kelo/handlers/http/meters/GetMeterCollectionLinks.h"
#include "support/HandlerTest.h"
#include "tavelabi/Exceptions.h"
#include "unit/handlers/http/meters/MeterResources.h"

namespace halvor::kelo {
namespace {

using tavelabi::Resource;
using tavelabi::ResourceValue;
using test::MeterResources;

constexpr const char* kList = "/system/meter/collection/list";

class GetMeterCollectionLinksTest : public test::HandlerTest<GetMeterCollectionLinks> {
 protected:
  web::HttpResponsePtr get() {
    return call(host, web::Get, "/1/api/meters/collections/links", "", "", "client");
  }
  void collection(const std::string& path, const std::string& label,
                  const std::vector<std::string>& groups) {
    host.answer(path, MeterResources::listing(groups, {{"label", label}, {"path", path}}));
  }
};

TEST_F(GetMeterCollectionLinksTest, LinksCollectionsWithMetersInListOrder) {
  host.answer(kList, MeterResources::listing(
                         {"/meters/rf/list", "/meters/spare/list", "/meters/audio/list"}));
  collection("/meters/rf/list", "RF output", {"/meters/rf/out"});
  collection("/meters/spare/list", "Spare", {"/meters/spare/a", "/meters/spare/b"});
  collection("/meters/audio/list", "Audio", {"/meters/audio/empty", "/meters/audio/aes"});
  host.answer("/meters/rf/out", MeterResources::listing({"/meters/rf/out/power"}));
  host.answer("/meters/spare/a", MeterResources::listing({}));
  host.answer("/meters/spare/b", MeterResources::listing({}));
  host.answer("/meters/audio/empty", MeterResources::listing({}));
  host.answer("/meters/audio/aes", MeterResources::listing({"/meters/audio/aes/left"}));

  const web::HttpResponsePtr resp = get();
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->contentType(), web::CT_APPLICATION_JSON);
  // The collection whose groups are all empty gets no link; the meters themselves are not read.
  EXPECT_EQ(resp->body(), R"({"links":[{"path":"/meters/rf/list","label":"RF output"},)"
                          R"({"path":"/meters/audio/list","label":"Audio"}]})");
  EXPECT_TRUE(host.actionsOn("/meters/rf/out/power").empty());
  for (const tavelabi::ResourceAction& action : host.actions()) {
    EXPECT_EQ(action.sessionId, "client") << action.path;
  }
}

TEST_F(GetMeterCollectionLinksTest, TheListAndTheCollectionsAreReadAsUserActivity) {
  host.answer(kList, MeterResources::listing({"/meters/rf/list"}));
  collection("/meters/rf/list", "RF output", {"/meters/rf/out"});
  host.answer("/meters/rf/out", MeterResources::listing({"/meters/rf/out/power"}));
  get();
  EXPECT_EQ(MeterResources::flagOf(host.actionsOn(kList).at(0)), 0);
  const auto collectionReads = host.actionsOn("/meters/rf/list");
  ASSERT_EQ(collectionReads.size(), 2u);  // once to look for meters, once for the link
  for (const auto& read : collectionReads) EXPECT_EQ(MeterResources::flagOf(read), 0);
  EXPECT_EQ(MeterResources::flagOf(host.actionsOn("/meters/rf/out").at(0)), -1);
}

TEST_F(GetMeterCollectionLinksTest, NoCollectionWithMetersIsAnEmptyListPrintedAsSuch) {
  host.answer(kList, MeterResources::listing({"/meters/spare/list"}));
  collection("/meters/spare/list", "Spare", {"/meters/spare/a"});
  host.answer("/meters/spare/a", MeterResources::listing({}));
  EXPECT_EQ(get()->body(), R"({"links":[]})");

  host.answer(kList, MeterResources::listing({}));
  EXPECT_EQ(get()->body(), R"({"links":[]})");
}

TEST_F(GetMeterCollectionLinksTest, ALinkWithoutALabelLeavesItOut) {
  host.answer(kList, MeterResources::listing({"/meters/x/list"}));
  host.answer("/meters/x/list",
              MeterResources::listing({"/meters/x/g"}, {{"path", "/meters/x/list"}}));
  host.answer("/meters/x/g", MeterResources::listing({"/meters/x/g/m"}));
  EXPECT_EQ(get()->body(), R"({"links":[{"path":"/meters/x/list"}]})");
}

TEST_F(GetMeterCollectionLinksTest, AListWithoutValueThrows) {
  host.answer(kList, Resource("label", ResourceValue(std::string("none"))));
  EXPECT_THROW(get(), std::out_of_range);
}

TEST_F(GetMeterCollectionLinksTest, AnUnreadableCollectionOrGroupThrowsTheHostsException) {
  host.answer(kList, MeterResources::listing({"/meters/gone/list"}));
  host.fail("/meters/gone/list", [] {
    throw tavelabi::NonExistentResourcePathException("No resource at /meters/gone/list");
  });
  EXPECT_THROW(get(), tavelabi::NonExistentResourcePathException);
}

}  // namespace
}  // namespace halvor::kelo
