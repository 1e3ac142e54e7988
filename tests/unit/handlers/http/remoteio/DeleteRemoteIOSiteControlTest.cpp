#include <gtest/gtest.h>

#include <string>

#include "kelo/handlers/http/remoteio/DeleteRemoteIOSiteControl.h"
#include "support/HandlerTest.h"
#include "tavelabi/Exceptions.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;

class DeleteRemoteIOSiteControlTest : public test::HandlerTest<DeleteRemoteIOSiteControl> {
 protected:
  web::HttpResponsePtr remove(const std::string& guid) {
    return callMember(&DeleteRemoteIOSiteControl::deleteRemoteIOSiteControl,
                      test::makeRequest(web::Delete, "/1/api/remote-io/siteControls/" + guid, ""),
                      "s1", guid);
  }
};

TEST_F(DeleteRemoteIOSiteControlTest, AnswersOnceTheControlCanNoLongerBeRead) {
  host.answer(CCRUD::Command, "/remoteio/siteControl/delete", Resource());
  int reads = 0;
  host.fail("/remoteio/siteControl/sc7", [&reads] {
    if (++reads < 4) return;
    throw tavelabi::NonExistentResourcePathException("No such object");
  });
  const web::HttpResponsePtr resp = remove("sc7");
  const auto command = host.actionsOn("/remoteio/siteControl/delete");
  ASSERT_EQ(command.size(), 1u);
  EXPECT_EQ(command[0].resource.values.at("guid").getStringValue(), "sc7");
  EXPECT_EQ(reads, 4);
  EXPECT_EQ(resp->statusCode(), 200);
  EXPECT_EQ(resp->contentType(), web::CT_APPLICATION_JSON);
  EXPECT_EQ(std::string(resp->body()), "Successfully deleted Site Control.");
}

TEST_F(DeleteRemoteIOSiteControlTest, ARefusedCommandPassesToTheFrame) {
  host.fail("/remoteio/siteControl/delete",
            [] { throw tavelabi::NonExistentResourcePathException("No such object"); });
  EXPECT_THROW(remove("nope"), tavelabi::NonExistentResourcePathException);
  EXPECT_TRUE(host.actionsOn("/remoteio/siteControl/nope").empty());
}

}  // namespace
}  // namespace halvor::kelo
