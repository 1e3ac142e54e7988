#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "kelo/handlers/http/devices/GetDeviceListHandler.h"
#include "support/HandlerTest.h"
#include "tavelabi/Exceptions.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using Texts = std::vector<std::string>;

class GetDeviceListHandlerTest : public test::HandlerTest<GetDeviceListHandler> {
 protected:
  web::HttpResponsePtr get(const std::string& sessionId = "s1") {
    return call(host, web::Get, "/1/api/devices", "", "", sessionId);
  }
};

TEST_F(GetDeviceListHandlerTest, EveryDeviceOfEveryTypeInListOrder) {
  host.answer("/device/list", Resource(Texts{"/device/exciter", "/device/fan"}));
  host.answer("/device/exciter/list", Resource(Texts{"/device/exciter/1", "/device/exciter/2"}));
  host.answer("/device/fan/list", Resource(Texts{"/device/fan/4", "/device/fan/3"}));

  const web::HttpResponsePtr resp = get();
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->contentType(), web::CT_APPLICATION_JSON);
  EXPECT_EQ(resp->body(), R"({"devices":[{"guid":"exciter-1","name":"exciter"},)"
                          R"({"guid":"exciter-2","name":"exciter"},{"guid":"fan-4","name":"fan"},)"
                          R"({"guid":"fan-3","name":"fan"}]})");
}

TEST_F(GetDeviceListHandlerTest, ReadsTheListsUnderTheClientsSessionInOrder) {
  host.answer("/device/list", Resource(Texts{"/device/exciter", "/device/fan"}));
  host.answer("/device/exciter/list", Resource(Texts{}));
  host.answer("/device/fan/list", Resource(Texts{}));
  get("client-7");
  const std::vector<tavelabi::ResourceAction> actions = host.actions();
  ASSERT_EQ(actions.size(), 3u);
  const Texts paths{"/device/list", "/device/exciter/list", "/device/fan/list"};
  for (std::size_t i = 0; i < actions.size(); ++i) {
    EXPECT_EQ(actions[i].path, paths[i]);
    EXPECT_EQ(actions[i].action, CCRUD::Read);
    EXPECT_EQ(actions[i].sessionId, "client-7");
  }
}

TEST_F(GetDeviceListHandlerTest, ATypeWithAnEmptyListAddsNoDevice) {
  host.answer("/device/list", Resource(Texts{"/device/exciter", "/device/fan"}));
  host.answer("/device/exciter/list", Resource(Texts{}));
  host.answer("/device/fan/list", Resource(Texts{"/device/fan/1"}));
  EXPECT_EQ(get()->body(), R"({"devices":[{"guid":"fan-1","name":"fan"}]})");
}

TEST_F(GetDeviceListHandlerTest, NoDeviceTypesIsAnEmptyObject) {
  host.answer("/device/list", Resource(Texts{}));
  const web::HttpResponsePtr resp = get();
  EXPECT_EQ(resp->statusCode(), web::k200OK);
  EXPECT_EQ(resp->body(), "{}");
}

TEST_F(GetDeviceListHandlerTest, EveryMatchOfThePrefixIsRemovedNotOnlyTheFirst) {
  host.answer("/device/list", Resource(Texts{"/device/fan/device/"}));
  // "/device/fan/device/" less every "/device/" is "fan".
  host.answer("/device/fan/list", Resource(Texts{"/device/fan/2/device/fan/x"}));
  EXPECT_EQ(get()->body(), R"({"devices":[{"guid":"fan-2x","name":"fan"}]})");
}

TEST_F(GetDeviceListHandlerTest, APathOutsideThePatternIsKeptWhole) {
  host.answer("/device/list", Resource(Texts{"exciter"}));
  host.answer("/device/exciter/list", Resource(Texts{"other/7"}));
  EXPECT_EQ(get()->body(), R"({"devices":[{"guid":"exciter-other/7","name":"exciter"}]})");
}

TEST_F(GetDeviceListHandlerTest, ADotInTheNameMatchesAnyCharacterAsAPattern) {
  // The device name becomes part of a regular expression: "a.c" also matches "abc".
  host.answer("/device/list", Resource(Texts{"/device/a.c"}));
  host.answer("/device/a.c/list", Resource(Texts{"/device/abc/5"}));
  EXPECT_EQ(get()->body(), R"({"devices":[{"guid":"a.c-5","name":"a.c"}]})");
}

TEST_F(GetDeviceListHandlerTest, AListWithoutValueFailsWithOutOfRange) {
  host.answer("/device/list", Resource());
  EXPECT_THROW(get(), std::out_of_range);
  host.answer("/device/list", Resource(Texts{"/device/fan"}));
  host.answer("/device/fan/list", Resource("other", tavelabi::ResourceValue(1)));
  EXPECT_THROW(get(), std::out_of_range);
}

TEST_F(GetDeviceListHandlerTest, HostFailurePassesThrough) {
  host.answer("/device/list", Resource(Texts{"/device/fan"}));
  host.fail("/device/fan/list", [] {
    throw tavelabi::NonExistentResourcePathException("No resource at /device/fan/list");
  });
  EXPECT_THROW(get(), tavelabi::NonExistentResourcePathException);
}

}  // namespace
}  // namespace halvor::kelo
