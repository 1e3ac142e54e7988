#include <gtest/gtest.h>

#include <string>

#include "kelo/handlers/http/versions/GetLodestarHandler.h"
#include "support/HandlerTest.h"

namespace halvor::kelo {
namespace {

using tavelabi::Resource;
using tavelabi::ResourceValue;

class GetLodestarHandlerTest : public test::HandlerTest<GetLodestarHandler> {};

TEST_F(GetLodestarHandlerTest, AnAbsentKeyLeavesItsFieldUnset) {
  Resource registration("lodestarEnabled", ResourceValue(false));
  registration.values["email"] = ResourceValue("ops@example.net");
  host.answer("/lodestar/service/query", registration);
  const web::HttpResponsePtr resp = call(host, web::Get, "/1/api/lodestar", "", "", "s1");
  EXPECT_EQ(resp->statusCode(), 200);
  EXPECT_EQ(std::string(resp->body()), R"({"lodestarEnabled":false,"email":"ops@example.net"})");
}

}  // namespace
}  // namespace halvor::kelo
