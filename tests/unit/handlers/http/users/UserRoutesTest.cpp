#include <gtest/gtest.h>

#include "kelo/Exceptions.h"
#include "kelo/handlers/http/users/DeleteUser.h"
#include "kelo/handlers/http/users/GetRoleListHandler.h"
#include "kelo/handlers/http/users/GetUser.h"
#include "kelo/handlers/http/users/GetUserList.h"
#include "kelo/handlers/http/users/PostChangeUserPassword.h"
#include "kelo/handlers/http/users/PostUser.h"
#include "kelo/handlers/http/users/PutUser.h"
#include "support/HandlerTest.h"
#include "tavelabi/Exceptions.h"
#include "unit/handlers/http/users/UserResources.h"

namespace halvor::kelo {
namespace {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;
using test::UserResources;

template <class Handler>
class UserHandlerTest : public test::HandlerTest<Handler> {
 protected:
  UserHandlerTest() {
    UserResources::answerValidations(this->host);
    this->host.answer(CCRUD::Read, "/user/users/ann", UserResources::user("ann"));
  }
};

using PostUserTest = UserHandlerTest<PostUser>;
using PutUserTest = UserHandlerTest<PutUser>;
using GetUserTest = UserHandlerTest<GetUser>;
using DeleteUserTest = UserHandlerTest<DeleteUser>;
using GetUserListTest = UserHandlerTest<GetUserList>;
using PostChangeUserPasswordTest = UserHandlerTest<PostChangeUserPassword>;
using GetRoleListHandlerTest = test::HandlerTest<GetRoleListHandler>;

TEST_F(PostUserTest, AnEmptyBodyIsMissingFormDataBeforeAnyHostCall) {
  try {
    call(host, web::Post, "/1/api/users", "", "", "s");
    FAIL() << "no exception";
  } catch (const RequestMissingFormData& error) {
    EXPECT_STREQ("Request missing form data: body.", error.what());
  }
  EXPECT_TRUE(host.actions().empty());
}

TEST_F(PostUserTest, ABodyThatIsNotJsonIsInvalidJson) {
  EXPECT_THROW(call(host, web::Post, "/1/api/users", "", "{x", "s"), InvalidJson);
  EXPECT_TRUE(host.actions().empty());
}

TEST_F(PostUserTest, SendsTheUserAsNewUserAndShowsTheNameTheHostGaveBack) {
  host.answer(CCRUD::Command, "/user/command/newUser",
              Resource("username", ResourceValue(std::string("ann"))));
  const auto resp = call(host, web::Post, "/1/api/users", "",
                         R"({"username":"Ann ","password":"pw","firstName":"A"})", "s");
  const auto command = host.actionsOn("/user/command/newUser").at(0);
  EXPECT_EQ(CCRUD::Command, command.action);
  EXPECT_EQ("Ann ", command.resource.values.at("username").getStringValue());
  EXPECT_EQ("pw", command.resource.values.at("password").getStringValue());
  EXPECT_EQ(1u, host.actionsOn("/user/users/ann").size());
  EXPECT_EQ(200, resp->statusCode());
  EXPECT_EQ(web::CT_APPLICATION_JSON, resp->contentType());
  EXPECT_NE(std::string::npos, resp->body().find(R"("username":"ann")"));
  EXPECT_EQ(std::string::npos, resp->body().find("clear-ann"));
  EXPECT_EQ(std::string::npos, resp->body().find("guid-ann"));
}

TEST_F(PostUserTest, AnAnswerWithoutUsernameEndsWithMapAt) {
  host.answer(CCRUD::Command, "/user/command/newUser", Resource());
  EXPECT_THROW(call(host, web::Post, "/1/api/users", "", R"({"username":"x"})", "s"),
               std::out_of_range);
}

TEST_F(PostUserTest, AFieldOfTheWrongTypeIsNotRefusedHere) {
  host.answer(CCRUD::Command, "/user/command/newUser",
              Resource("username", ResourceValue(std::string("ann"))));
  const auto resp =
      call(host, web::Post, "/1/api/users", "", R"({"firstName":"F","email":7})", "s");
  // What the converter left of the body goes to the host, whose checks stand behind it.
  ASSERT_EQ(1u, host.actionsOn("/user/command/newUser").size());
  EXPECT_EQ(0u, host.actionsOn("/user/command/newUser").at(0).resource.values.count("email"));
  EXPECT_EQ(200, resp->statusCode());
}

TEST_F(PutUserTest, ABodyWithoutUsernameSendsTheUrlsName) {
  host.answer(CCRUD::Update, "/user/users/ann", Resource());
  const auto resp = callMember(
      &PutUser::putUser, test::makeRequest(web::Put, "/1/api/users/ann", "", R"({"lastName":"L"})"),
      "s", "ann");
  const auto update = host.actions().at(0);
  EXPECT_EQ(CCRUD::Update, update.action);
  EXPECT_EQ("/user/users/ann", update.path);
  EXPECT_EQ("ann", update.resource.values.at("username").getStringValue());
  EXPECT_EQ("L", update.resource.values.at("lastName").getStringValue());
  EXPECT_EQ(200, resp->statusCode());
}

TEST_F(PutUserTest, ABodyWithUsernameSendsItToTheOldPathAndTheReplyReadsTheOldPath) {
  host.answer(CCRUD::Update, "/user/users/ann", Resource());
  callMember(&PutUser::putUser,
             test::makeRequest(web::Put, "/1/api/users/ann", "", R"({"username":"bea"})"), "s",
             "ann");
  const auto update = host.actions().at(0);
  EXPECT_EQ("/user/users/ann", update.path);
  EXPECT_EQ("bea", update.resource.values.at("username").getStringValue());
  EXPECT_EQ("/user/users/ann", host.actions().at(1).path);
  EXPECT_EQ(CCRUD::Read, host.actions().at(1).action);
}

TEST_F(GetUserTest, ShowsTheUserOfTheUrlsNameWithoutCountingAsAPoll) {
  const auto resp = callMember(&GetUser::getUser,
                               test::makeRequest(web::Get, "/1/api/users/ann", ""), "s", "ann");
  EXPECT_EQ(0, UserResources::flagOf(host.actions().at(0)));
  EXPECT_EQ(200, resp->statusCode());
  EXPECT_NE(std::string::npos, resp->body().find(R"("firstName":"First")"));
}

TEST_F(DeleteUserTest, DeletesThePathAndAnswers200WithoutABody) {
  host.answer(CCRUD::Delete, "/user/users/ann", UserResources::user("ann"));
  const auto resp = callMember(&DeleteUser::deleteUser,
                               test::makeRequest(web::Delete, "/1/api/users/ann", ""), "s", "ann");
  EXPECT_EQ(CCRUD::Delete, host.onlyAction().action);
  EXPECT_EQ(200, resp->statusCode());
  EXPECT_TRUE(resp->body().empty());
}

TEST_F(DeleteUserTest, ARefusalOfTheHostPassesThrough) {
  host.fail("/user/users/ann", [] { throw tavelabi::AuthorizationFailure("no"); });
  EXPECT_THROW(callMember(&DeleteUser::deleteUser,
                          test::makeRequest(web::Delete, "/1/api/users/ann", ""), "s", "ann"),
               tavelabi::AuthorizationFailure);
}

TEST_F(GetUserListTest, ShowsEachListedUserInOrder) {
  host.answer("/user/users/list/all",
              Resource(ResourceValue(std::vector<std::string>{"bea", "ann"})));
  host.answer(CCRUD::Read, "/user/users/bea", UserResources::user("bea"));
  const auto resp = call(host, web::Get, "/1/api/users", "", "", "s");
  const std::string& body = resp->body();
  EXPECT_EQ(200, resp->statusCode());
  EXPECT_LT(body.find(R"("username":"bea")"), body.find(R"("username":"ann")"));
  EXPECT_EQ(std::string::npos, body.find("clear-"));
}

TEST_F(PostChangeUserPasswordTest, SendsOnlyTheFieldsThatAreSetAndShowsTheHostsUser) {
  host.answer(CCRUD::Command, "/user/command/changePassword",
              Resource("username", ResourceValue(std::string("ann"))));
  const auto resp = call(host, web::Post, "/1/api/changePassword", "",
                         R"({"oldPassword":"a","newPassword":"b"})", "s");
  const auto command = host.actions().at(0);
  EXPECT_EQ(0u, command.resource.values.count("username"));
  EXPECT_EQ("a", command.resource.values.at("oldPassword").getStringValue());
  EXPECT_EQ("b", command.resource.values.at("newPassword").getStringValue());
  EXPECT_EQ(200, resp->statusCode());
  EXPECT_EQ(std::string::npos, resp->body().find("\"b\""));
}

TEST_F(GetRoleListHandlerTest, ListsTheRolesInKeyOrder) {
  auto role = [](const std::string& name) {
    return ResourceValue(ResourceValue::Map{{"guid", ResourceValue(name + "-guid")},
                                            {"roleName", ResourceValue(name)},
                                            {"visible", ResourceValue(true)}});
  };
  Resource roles;
  roles.values["b"] = role("second");
  roles.values["a"] = role("first");
  host.answer("/role/list/all", roles);
  const auto resp = call(host, web::Get, "/1/api/roles", "", "", "s");
  EXPECT_EQ(R"({"roles":[{"guid":"first-guid","roleName":"first","visible":true},)"
            R"({"guid":"second-guid","roleName":"second","visible":true}]})",
            resp->body());
}

TEST_F(GetRoleListHandlerTest, ARoleWithoutVisibleEndsWithMapAt) {
  host.answer("/role/list/all", Resource("a", ResourceValue(ResourceValue::Map{
                                                  {"guid", ResourceValue(std::string("g"))},
                                                  {"roleName", ResourceValue(std::string("n"))}})));
  EXPECT_THROW(call(host, web::Get, "/1/api/roles", "", "", "s"), std::out_of_range);
}

}  // namespace
}  // namespace halvor::kelo
