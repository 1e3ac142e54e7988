#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "kelo/handlers/http/versions/GetVersionHandler.h"
#include "support/HandlerTest.h"
#include "tavelabi/Exceptions.h"

namespace halvor::kelo {
namespace {

using tavelabi::Resource;
using tavelabi::ResourceValue;

class GetVersionHandlerTest : public test::HandlerTest<GetVersionHandler> {
 protected:
  web::HttpRequestPtr request() { return test::makeRequest(web::Get, "/1/api/versions/x", ""); }
};

TEST_F(GetVersionHandlerTest, EachDepthJoinsItsParametersBehindVersions) {
  host.answer("/versions/tavel", Resource(ResourceValue("1")));
  host.answer("/versions/tavel/core", Resource(ResourceValue("2")));
  host.answer("/versions/exciter/fpga/main", Resource(ResourceValue("3")));
  EXPECT_EQ(std::string(
                callMember(&GetVersionHandler::getVersionLayer1, request(), "s1", "tavel")->body()),
            R"({"name":"/tavel","version":"1"})");
  EXPECT_EQ(
      std::string(callMember(&GetVersionHandler::getVersionLayer2, request(), "s1", "tavel", "core")
                      ->body()),
      R"({"name":"/tavel/core","version":"2"})");
  const web::HttpResponsePtr resp =
      callMember(&GetVersionHandler::getVersionLayer3, request(), "s1", "exciter", "fpga", "main");
  EXPECT_EQ(resp->statusCode(), 200);
  EXPECT_EQ(std::string(resp->body()), R"({"name":"/exciter/fpga/main","version":"3"})");
}

TEST_F(GetVersionHandlerTest, AnUnknownComponentIsTheHostsFailure) {
  host.fail("/versions/nothing",
            [] { throw tavelabi::NonExistentResourcePathException("no /versions/nothing"); });
  EXPECT_THROW(callMember(&GetVersionHandler::getVersionLayer1, request(), "s1", "nothing"),
               tavelabi::NonExistentResourcePathException);
}

TEST_F(GetVersionHandlerTest, AVersionWithoutValueFailsWithMapAt) {
  host.answer("/versions/tavel", Resource());
  EXPECT_THROW(callMember(&GetVersionHandler::getVersionLayer1, request(), "s1", "tavel"),
               std::out_of_range);
}

}  // namespace
}  // namespace halvor::kelo
