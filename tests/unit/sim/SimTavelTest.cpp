#include <gtest/gtest.h>

#include <thread>

#include "SimTestSupport.h"
#include "sim/SimTavel.h"
#include "tavelabi/Exceptions.h"
#include "tavelabi/Session.h"

namespace halvor::sim {
namespace {

using namespace std::chrono_literals;
using kelo::test::HostWithUsers;
using tavelabi::AuthorizationFailure;
using tavelabi::CCRUD;
using tavelabi::NonExistentResourcePathException;
using tavelabi::NonExistentSessionException;
using tavelabi::Resource;
using tavelabi::ResourceAction;
using tavelabi::ResourceValue;

Resource text(const std::string& key, const std::string& value) {
  return Resource(key, ResourceValue(value));
}

Resource credentials(const std::string& user, const std::string& password) {
  Resource resource;
  resource.values["username"] = ResourceValue(user);
  resource.values["password"] = ResourceValue(password);
  return resource;
}

Resource bypass() { return Resource(SimTavel::kBypassKey, ResourceValue(true)); }

template <typename Exception>
std::string messageOf(const std::function<void()>& call) {
  try {
    call();
  } catch (const Exception& error) {
    return error.what();
  }
  return "no exception";
}

// ---- Tree semantics through processResourceAction ----

TEST(SimTavelTest, CrudAnswersAndWritesTheAnswerIntoTheAction) {
  HostWithUsers h;
  ResourceAction create(CCRUD::Create, "/a", Resource(ResourceValue(1)), &h.info, h.adminSession);
  Resource answer = h.host->processResourceAction(create);
  EXPECT_EQ(1, answer.values.at("value").getIntValue());
  EXPECT_EQ(1, create.resource.values.at("value").getIntValue());

  ResourceAction update(CCRUD::Update, "/a", Resource("extra", ResourceValue(2)), &h.info,
                        h.adminSession);
  h.host->processResourceAction(update);
  EXPECT_EQ(2u, update.resource.values.size());

  ResourceAction read(CCRUD::Read, "/a", &h.info, h.adminSession);
  EXPECT_EQ(2u, h.host->processResourceAction(read).values.size());
  EXPECT_EQ(2, read.resource.values.at("extra").getIntValue());

  ResourceAction remove(CCRUD::Delete, "/a", &h.info, h.adminSession);
  h.host->processResourceAction(remove);
  EXPECT_EQ("No resource at /a", messageOf<NonExistentResourcePathException>(
                                     [&] { h.run(CCRUD::Read, "/a", h.adminSession); }));
  EXPECT_THROW(h.run(CCRUD::Update, "/a", h.adminSession), NonExistentResourcePathException);
  EXPECT_THROW(h.run(CCRUD::Delete, "/a", h.adminSession), NonExistentResourcePathException);
}

TEST(SimTavelTest, CreateAgainReplacesSoARestartedPluginCanCreateItsTables) {
  HostWithUsers h;
  h.run(CCRUD::Create, "/kelo/websocketConnectivities", h.adminSession,
        Resource(ResourceValue(ResourceValue::Map{{"1.2.3.4", ResourceValue(5)}})));
  h.run(CCRUD::Create, "/kelo/websocketConnectivities", h.adminSession,
        Resource(ResourceValue(ResourceValue::Map{})));
  EXPECT_TRUE(h.run(CCRUD::Read, "/kelo/websocketConnectivities", h.adminSession)
                  .values.at("value")
                  .getMapValue()
                  .empty());
}

TEST(SimTavelTest, BypassKeyIsNotData) {
  HostWithUsers h;
  h.run(CCRUD::Create, "/a", h.adminSession, Resource(ResourceValue(1)));
  Resource answer = h.run(CCRUD::Read, "/a", h.adminSession, bypass());
  EXPECT_EQ(1u, answer.values.size());
  EXPECT_EQ(0u, answer.values.count(SimTavel::kBypassKey));
}

TEST(SimTavelTest, ResourceListAnswersPathsInOrder) {
  HostWithUsers h;
  for (const char* path : {"/px3/b", "/px3/a", "/px3/a/x", "/sys"}) {
    h.run(CCRUD::Create, path, h.adminSession);
  }
  Resource answer =
      h.run(CCRUD::Command, "/resource/list", h.viewerSession, text("value", "/px3/*"));
  const auto& list = answer.values.at("value").getListValue();
  ASSERT_EQ(2u, list.size());
  EXPECT_EQ("/px3/a", list[0].getStringValue());
  EXPECT_EQ("/px3/b", list[1].getStringValue());
  answer = h.run(CCRUD::Command, "/resource/list", h.viewerSession, text("value", "/px3/**"));
  EXPECT_EQ(3u, answer.values.at("value").getListValue().size());
}

TEST(SimTavelTest, BuiltInCommandsAreServedFromTheCommandTable) {
  HostWithUsers h;
  EXPECT_EQ((std::vector<std::string>{"/command/restartTavel", "/resource/list",
                                      "/session/command/newSession", "/user/command/autoLogin",
                                      "/user/command/changePassword", "/user/command/login",
                                      "/user/command/logout", "/user/command/newUser"}),
            h.host->commandPaths());
}

TEST(SimTavelTest, CommandsAddedToTheTableRunAndAPathCannotBeAddedTwice) {
  HostWithUsers h;
  h.host->addCommands({{"/x/command/echo", [](ResourceAction& action) { return action.resource; }}},
                      "x");
  Resource answer = h.run(CCRUD::Command, "/x/command/echo", h.operatorSession, text("a", "b"));
  EXPECT_EQ("b", answer.values.at("a").getStringValue());
  EXPECT_THROW(h.host->addCommands({{"/x/command/echo", {}}}, "y"), DuplicateCommandError);
  EXPECT_THROW(h.host->addCommands({{"/user/command/login", {}}}, "y"), DuplicateCommandError);
}

TEST(SimTavelTest, CommandListenersStillRunForPathsNotInTheTable) {
  HostWithUsers h;
  kelo::test::RecordingListener listener("/plugin/command/**", {CCRUD::Command});
  listener.onCall = [](ResourceAction& action) { action.resource = text("by", "listener"); };
  h.host->addResourceListener(&h.info, &listener);
  h.host->addCommands({{"/x/command/y", [](ResourceAction&) { return text("by", "table"); }}}, "x");
  EXPECT_EQ(
      "listener",
      h.run(CCRUD::Command, "/plugin/command/go", h.adminSession).values.at("by").getStringValue());
  EXPECT_EQ("table",
            h.run(CCRUD::Command, "/x/command/y", h.adminSession).values.at("by").getStringValue());
  h.host->removeResourceListener(&h.info, &listener);
}

// ---- Read of a glob ----

TEST(SimTavelTest, ReadOfAGlobMapsEachMatchingPathToItsValuesInPathOrder) {
  HostWithUsers h;
  h.run(CCRUD::Create, "/sys/b", h.adminSession, Resource(ResourceValue(2)));
  h.run(CCRUD::Create, "/sys/a", h.adminSession, text("name", "TX-1"));
  h.run(CCRUD::Create, "/sys/a/deep", h.adminSession, Resource(ResourceValue(3)));
  h.run(CCRUD::Create, "/other", h.adminSession, Resource(ResourceValue(4)));
  ResourceAction read(CCRUD::Read, "/sys/*", &h.info, h.viewerSession);
  Resource answer = h.host->processResourceAction(read);
  ASSERT_EQ(2u, answer.values.size());
  EXPECT_EQ("/sys/a", answer.values.begin()->first);
  EXPECT_EQ("TX-1", answer.values.at("/sys/a").getMapValue().at("name").getStringValue());
  EXPECT_EQ(2, answer.values.at("/sys/b").getMapValue().at("value").getIntValue());
  EXPECT_EQ(2u, read.resource.values.size());

  answer = h.run(CCRUD::Read, "/sys/**", h.viewerSession);
  EXPECT_EQ(3u, answer.values.size());
  EXPECT_EQ(3, answer.values.at("/sys/a/deep").getMapValue().at("value").getIntValue());
}

TEST(SimTavelTest, ReadOfAGlobWithoutMatchesIsAnEmptyResource) {
  HostWithUsers h;
  EXPECT_TRUE(h.run(CCRUD::Read, "/nothing/**", h.viewerSession).values.empty());
}

TEST(SimTavelTest, ReadOfAGlobNeedsALiveLoggedInSession) {
  HostWithUsers h;
  EXPECT_THROW(h.run(CCRUD::Read, "/**", "no-such-session"), NonExistentSessionException);
  Resource fresh = h.run(CCRUD::Command, "/session/command/newSession", h.adminSession);
  EXPECT_THROW(h.run(CCRUD::Read, "/**", fresh.values.at("sessionId").getStringValue()),
               AuthorizationFailure);
}

TEST(SimTavelTest, ASessionNotLoggedInIsRefusedWithItsIdentifierTheVerbAndThePath) {
  HostWithUsers h;
  const std::string fresh = h.run(CCRUD::Command, "/session/command/newSession", h.adminSession)
                                .values.at("sessionId")
                                .getStringValue();
  EXPECT_EQ("Session " + fresh + " is not logged in and may not Read /presets/active",
            messageOf<AuthorizationFailure>([&] { h.run(CCRUD::Read, "/presets/active", fresh); }));
}

TEST(SimTavelTest, AChangedRoleCountsAtTheNextAction) {
  HostWithUsers h;
  EXPECT_NO_THROW(h.run(CCRUD::Create, "/presets/active", h.operatorSession));
  h.run(CCRUD::Update, "/user/users/oper", h.adminSession, text("role", "read-only"));
  EXPECT_EQ("User oper may not Update /presets/active", messageOf<AuthorizationFailure>([&] {
              h.run(CCRUD::Update, "/presets/active", h.operatorSession);
            }));
  h.run(CCRUD::Update, "/user/users/oper", h.adminSession, text("role", "operator"));
  EXPECT_NO_THROW(h.run(CCRUD::Update, "/presets/active", h.operatorSession));
  // A role that is not a text, or not a role, grants nothing.
  h.run(CCRUD::Update, "/user/users/oper", h.adminSession, Resource("role", ResourceValue(1)));
  EXPECT_THROW(h.run(CCRUD::Read, "/presets/active", h.operatorSession), AuthorizationFailure);
  h.run(CCRUD::Update, "/user/users/oper", h.adminSession, text("role", "guest"));
  EXPECT_THROW(h.run(CCRUD::Read, "/presets/active", h.operatorSession), AuthorizationFailure);
}

TEST(SimTavelTest, ARoleChangedOnAnotherThreadOrInAnotherHostCountsAtTheNextAction) {
  HostWithUsers h;
  EXPECT_NO_THROW(h.run(CCRUD::Create, "/presets/active", h.operatorSession));
  std::thread([&] {
    h.run(CCRUD::Update, "/user/users/oper", h.adminSession, text("role", "read-only"));
  }).join();
  EXPECT_THROW(h.run(CCRUD::Update, "/presets/active", h.operatorSession), AuthorizationFailure);
  // A second host whose operator is still an operator: its tree is not the first one's.
  HostWithUsers other;
  EXPECT_NO_THROW(other.run(CCRUD::Create, "/presets/active", other.operatorSession));
  EXPECT_THROW(h.run(CCRUD::Update, "/presets/active", h.operatorSession), AuthorizationFailure);
}

TEST(SimTavelTest, UnknownCommandIsANonExistentPath) {
  HostWithUsers h;
  EXPECT_EQ("No resource at /command/unknown", messageOf<NonExistentResourcePathException>([&] {
              h.run(CCRUD::Command, "/command/unknown", h.adminSession);
            }));
}

TEST(SimTavelTest, CommandListenerRunsOnCallersThreadAndWritesTheAnswer) {
  HostWithUsers h;
  kelo::test::RecordingListener listener("/command/applyCertificate", {CCRUD::Command});
  listener.onCall = [](ResourceAction& action) {
    action.resource = Resource("applied", ResourceValue(true));
  };
  h.host->addResourceListener(&h.info, &listener);
  Resource answer =
      h.run(CCRUD::Command, "/command/applyCertificate", h.adminSession, text("file", "x.pem"));
  EXPECT_TRUE(answer.values.at("applied").getBoolValue());
  auto calls = listener.calls();
  ASSERT_EQ(1u, calls.size());
  EXPECT_EQ(std::this_thread::get_id(), calls[0].thread);
  EXPECT_EQ(1u, calls[0].hopCount);
  h.host->removeResourceListener(&h.info, &listener);
  EXPECT_THROW(h.run(CCRUD::Command, "/command/applyCertificate", h.adminSession),
               NonExistentResourcePathException);
}

TEST(SimTavelTest, CommandListenerExceptionReachesTheCaller) {
  HostWithUsers h;
  kelo::test::RecordingListener listener("/command/fail", {CCRUD::Command});
  listener.onCall = [](ResourceAction&) { throw std::runtime_error("listener says no"); };
  h.host->addResourceListener(&h.info, &listener);
  EXPECT_EQ("listener says no", messageOf<std::runtime_error>([&] {
              h.run(CCRUD::Command, "/command/fail", h.adminSession);
            }));
  h.host->removeResourceListener(&h.info, &listener);
}

TEST(SimTavelTest, RestartIsCountedAndPrinted) {
  HostWithUsers h;
  h.run(CCRUD::Command, "/command/restartTavel", h.adminSession);
  h.run(CCRUD::Command, "/command/restartTavel", h.operatorSession);
  EXPECT_EQ(2u, h.host->restartRequests());
}

TEST(SimTavelTest, RestartLineOnTheConsoleNamesThePlugin) {
  SimTavelOptions options;
  options.echoToConsole = true;
  HostWithUsers h(options);
  ::testing::internal::CaptureStdout();
  h.run(CCRUD::Command, "/command/restartTavel", h.adminSession);
  EXPECT_NE(std::string::npos,
            ::testing::internal::GetCapturedStdout().find("restart requested by Tester"));
}

TEST(SimTavelTest, PluginStatusIsPrintedAndKept) {
  SimTavelOptions options;
  HostWithUsers h(options);
  ::testing::internal::CaptureStdout();
  h.host->setPluginStatus(
      &h.info, tavelabi::PluginStatus(tavelabi::PluginStatus::Initializing, "Initializing"));
  h.host->setPluginStatus(&h.info, tavelabi::PluginStatus(tavelabi::PluginStatus::Ok, "OK"));
  std::string out = ::testing::internal::GetCapturedStdout();
  EXPECT_NE(std::string::npos, out.find("[status] Tester: Initializing Initializing\n"));
  EXPECT_NE(std::string::npos, out.find("[status] Tester: Ok OK\n"));
  auto history = h.host->statusHistory();
  ASSERT_EQ(2u, history.size());
  EXPECT_EQ(tavelabi::PluginStatus::Ok, history[1].code);
  EXPECT_EQ("Tester", history[1].pluginName);
}

// ---- Sessions ----

TEST(SimTavelTest, ActionsWithoutALiveSessionAreRefused) {
  HostWithUsers h;
  EXPECT_EQ("Session  does not exist",
            messageOf<NonExistentSessionException>([&] { h.run(CCRUD::Read, "/a", ""); }));
  EXPECT_EQ("Session nope does not exist",
            messageOf<NonExistentSessionException>([&] { h.run(CCRUD::Read, "/a", "nope"); }));
  EXPECT_THROW(h.run(CCRUD::Command, "/session/command/newSession", "nope"),
               NonExistentSessionException);
}

TEST(SimTavelTest, PluginSessionLogsInWithConfiguredCredentials) {
  HostWithUsers h;
  Resource sessionResource = h.host->createPluginSession(&h.info);
  tavelabi::Session session = tavelabi::Session::convertResourceToSession(sessionResource);
  EXPECT_EQ(32u, session.sessionId.size());
  EXPECT_EQ("", session.username);
  EXPECT_EQ("localhost", session.host);
  EXPECT_FALSE(session.created.empty());
  // Not logged in yet: only the session commands.
  EXPECT_THROW(h.run(CCRUD::Read, "/a", session.sessionId), AuthorizationFailure);
  EXPECT_EQ("Invalid username or password", messageOf<AuthorizationFailure>([&] {
              h.host->loginPlugin(&h.info, "admin", "wrong", session);
            }));
  h.host->loginPlugin(&h.info, "admin", "admin-pw", session);
  Resource answer = h.run(CCRUD::Command, "/session/command/newSession", session.sessionId);
  EXPECT_EQ(32u, answer.values.at("sessionId").getStringValue().size());
}

TEST(SimTavelTest, NewSessionLoginSessionReadLogout) {
  HostWithUsers h;
  std::string client = h.run(CCRUD::Command, "/session/command/newSession", h.adminSession)
                           .values.at("sessionId")
                           .getStringValue();
  EXPECT_EQ("", h.run(CCRUD::Read, "/session/sessions/" + client, h.adminSession, bypass())
                    .values.at("username")
                    .getStringValue());
  EXPECT_THROW(h.run(CCRUD::Read, "/session/sessions/" + client, client), AuthorizationFailure);
  EXPECT_EQ("Invalid username or password", messageOf<AuthorizationFailure>([&] {
              h.run(CCRUD::Command, "/user/command/login", client, credentials("oper", "x"));
            }));
  EXPECT_THROW(h.run(CCRUD::Command, "/user/command/login", client, text("username", "oper")),
               AuthorizationFailure);
  h.run(CCRUD::Command, "/user/command/login", client, credentials("oper", "oper-pw"));
  EXPECT_EQ("oper", h.run(CCRUD::Read, "/session/sessions/" + client, client, bypass())
                        .values.at("username")
                        .getStringValue());
  h.run(CCRUD::Command, "/user/command/logout", client);
  EXPECT_THROW(h.run(CCRUD::Read, "/a", client), NonExistentSessionException);
  EXPECT_EQ("Session " + client + " does not exist", messageOf<NonExistentSessionException>([&] {
              h.run(CCRUD::Read, "/session/sessions/" + client, h.adminSession, bypass());
            }));
}

TEST(SimTavelTest, AutoLoginByHostRule) {
  HostWithUsers h;
  h.host->addAutoLoginRule({"lobby.local", "viewer"});
  std::string client = h.run(CCRUD::Command, "/session/command/newSession", h.adminSession)
                           .values.at("sessionId")
                           .getStringValue();
  EXPECT_EQ("No auto login for host other:7000", messageOf<AuthorizationFailure>([&] {
              h.run(CCRUD::Command, "/user/command/autoLogin", client, text("host", "other:7000"));
            }));
  Resource answer =
      h.run(CCRUD::Command, "/user/command/autoLogin", client, text("host", "lobby.local:7000"));
  EXPECT_EQ("viewer", answer.values.at("username").getStringValue());
  EXPECT_EQ("viewer", h.run(CCRUD::Read, "/session/sessions/" + client, client)
                          .values.at("username")
                          .getStringValue());
}

TEST(SimTavelTest, AutoLoginHostsOfAFixtureUser) {
  HostWithUsers h;
  h.host->addUser(FixtureUser{"wall", "pw", "read-only", {"[::1]", "127.0.0.1"}});
  std::string client = h.run(CCRUD::Command, "/session/command/newSession", h.adminSession)
                           .values.at("sessionId")
                           .getStringValue();
  EXPECT_EQ("wall",
            h.run(CCRUD::Command, "/user/command/autoLogin", client, text("host", "[::1]:8000"))
                .values.at("username")
                .getStringValue());
  EXPECT_TRUE(h.host->peek("/user/users/wall")->values.at("autoLogin").getBoolValue());
}

TEST(SimTavelTest, SessionExpiresWhenIdleAndBypassedReadsDoNotCount) {
  kelo::test::ManualClock clock;
  SimTavelOptions options = HostWithUsers::quietOptions();
  options.clock = clock.function();
  options.sessionTimeout = 60s;
  HostWithUsers h(options);
  std::string plugin =
      tavelabi::Session::convertResourceToSession(h.host->createPluginSession(&h.info)).sessionId;
  h.host->loginPlugin(&h.info, "admin", "admin-pw", tavelabi::Session{plugin, "", "", ""});
  h.run(CCRUD::Create, "/a", plugin, Resource());

  clock.advance(50s);
  h.run(CCRUD::Read, "/a", h.viewerSession);  // counts
  clock.advance(50s);
  h.run(CCRUD::Read, "/a", h.viewerSession, bypass());  // does not count
  h.run(CCRUD::Read, "/session/sessions/" + h.viewerSession, h.viewerSession, bypass());
  clock.advance(11s);
  EXPECT_THROW(h.run(CCRUD::Read, "/a", h.viewerSession, bypass()), NonExistentSessionException);
  EXPECT_THROW(h.run(CCRUD::Read, "/a", h.adminSession), NonExistentSessionException);
  // The plug-in's own session never expires.
  clock.advance(std::chrono::hours(48));
  EXPECT_NO_THROW(h.run(CCRUD::Read, "/a", plugin));
  EXPECT_NO_THROW(h.run(CCRUD::Read, "/session/sessions/" + plugin, plugin));
}

TEST(SimTavelTest, ExpireIdleSessionsSweeps) {
  kelo::test::ManualClock clock;
  SimTavelOptions options = HostWithUsers::quietOptions();
  options.clock = clock.function();
  options.sessionTimeout = 5s;
  HostWithUsers h(options);
  EXPECT_EQ(3u, h.host->sessionCount());
  clock.advance(6s);
  EXPECT_EQ(3u, h.host->expireIdleSessions());
  EXPECT_EQ(0u, h.host->sessionCount());
}

TEST(SimTavelTest, OpenSessionNeedsAKnownUserAndAFreeIdentifier) {
  HostWithUsers h;
  EXPECT_EQ("S1", h.host->openSession("admin", "S1"));
  EXPECT_NO_THROW(h.run(CCRUD::Command, "/command/restartTavel", "S1"));
  EXPECT_THROW(h.host->openSession("admin", "S1"), std::invalid_argument);
  EXPECT_THROW(h.host->openSession("ghost", "S2"), std::invalid_argument);
}

// ---- Rights ----

TEST(SimTavelTest, ReadOnlyUserIsRefusedWrites) {
  HostWithUsers h;
  h.run(CCRUD::Create, "/presets/active", h.adminSession, Resource(ResourceValue(1)));
  EXPECT_NO_THROW(h.run(CCRUD::Read, "/presets/active", h.viewerSession));
  EXPECT_EQ("User viewer may not Update /presets/active", messageOf<AuthorizationFailure>([&] {
              h.run(CCRUD::Update, "/presets/active", h.viewerSession, Resource(ResourceValue(2)));
            }));
  EXPECT_THROW(h.run(CCRUD::Create, "/x", h.viewerSession), AuthorizationFailure);
  EXPECT_THROW(h.run(CCRUD::Delete, "/presets/active", h.viewerSession), AuthorizationFailure);
  EXPECT_EQ("User viewer may not Command /command/restartTavel",
            messageOf<AuthorizationFailure>(
                [&] { h.run(CCRUD::Command, "/command/restartTavel", h.viewerSession); }));
  EXPECT_EQ(
      1, h.run(CCRUD::Read, "/presets/active", h.viewerSession).values.at("value").getIntValue());
  EXPECT_EQ(0u, h.host->restartRequests());
}

TEST(SimTavelTest, OperatorWritesEverythingButUsers) {
  HostWithUsers h;
  EXPECT_NO_THROW(h.run(CCRUD::Create, "/presets/active", h.operatorSession));
  EXPECT_NO_THROW(
      h.run(CCRUD::Update, "/presets/active", h.operatorSession, Resource(ResourceValue(2))));
  EXPECT_NO_THROW(h.run(CCRUD::Delete, "/presets/active", h.operatorSession));
  EXPECT_EQ("User oper may not Update /user/users/viewer", messageOf<AuthorizationFailure>([&] {
              h.run(CCRUD::Update, "/user/users/viewer", h.operatorSession,
                    text("role", "administrator"));
            }));
  EXPECT_THROW(h.run(CCRUD::Create, "/user/users/new", h.operatorSession), AuthorizationFailure);
  EXPECT_THROW(h.run(CCRUD::Delete, "/user/users/viewer", h.operatorSession), AuthorizationFailure);
  EXPECT_EQ("read-only", h.host->peek("/user/users/viewer")->values.at("role").getStringValue());
}

TEST(SimTavelTest, AdministratorManagesUsersAndRoleChangesApply) {
  HostWithUsers h;
  h.run(CCRUD::Update, "/user/users/viewer", h.adminSession, text("role", "operator"));
  EXPECT_NO_THROW(h.run(CCRUD::Create, "/x", h.viewerSession));
  h.run(CCRUD::Create, "/user/users/new", h.adminSession, [] {
    Resource user = credentials("new", "npw");
    user.values["role"] = ResourceValue(std::string("read-only"));
    return user;
  }());
  std::string client = h.run(CCRUD::Command, "/session/command/newSession", h.adminSession)
                           .values.at("sessionId")
                           .getStringValue();
  h.run(CCRUD::Command, "/user/command/login", client, credentials("new", "npw"));
  EXPECT_THROW(h.run(CCRUD::Create, "/y", client), AuthorizationFailure);
  h.run(CCRUD::Delete, "/user/users/new", h.adminSession);
  // A user that is gone keeps its session but has no rights left.
  EXPECT_THROW(h.run(CCRUD::Read, "/x", client), AuthorizationFailure);
}

TEST(SimTavelTest, PasswordChange) {
  HostWithUsers h;
  Resource change;
  change.values["username"] = ResourceValue(std::string("oper"));
  change.values["oldPassword"] = ResourceValue(std::string("oper-pw"));
  change.values["newPassword"] = ResourceValue(std::string("fresh"));
  EXPECT_EQ("oper", h.run(CCRUD::Command, "/user/command/changePassword", h.operatorSession, change)
                        .values.at("username")
                        .getStringValue());
  EXPECT_NO_THROW(h.host->loginPlugin(&h.info, "oper", "fresh",
                                      tavelabi::Session{h.operatorSession, "", "", ""}));
  change.values["oldPassword"] = ResourceValue(std::string("wrong"));
  EXPECT_THROW(h.run(CCRUD::Command, "/user/command/changePassword", h.operatorSession, change),
               AuthorizationFailure);
  change.values["username"] = ResourceValue(std::string("viewer"));
  EXPECT_EQ("User oper may not Command /user/command/changePassword",
            messageOf<AuthorizationFailure>([&] {
              h.run(CCRUD::Command, "/user/command/changePassword", h.operatorSession, change);
            }));
  EXPECT_THROW(h.run(CCRUD::Command, "/user/command/changePassword", h.viewerSession, change),
               AuthorizationFailure);
}

TEST(SimTavelTest, SeededUserResourceCarriesGuidAndRoleButNoPassword) {
  HostWithUsers h;
  Resource admin = h.run(CCRUD::Read, "/user/users/admin", h.adminSession);
  EXPECT_EQ("admin", admin.values.at("username").getStringValue());
  EXPECT_EQ(0u, admin.values.count("password"));
  EXPECT_EQ(36u, admin.values.at("guid").getStringValue().size());
  EXPECT_EQ("administrator", admin.values.at("role").getStringValue());
  EXPECT_EQ("administrator", admin.values.at("roles")
                                 .getMapValue()
                                 .at("administrator")
                                 .getMapValue()
                                 .at("roleName")
                                 .getStringValue());
}

TEST(SimTavelTest, FixtureSeedsUsersResourcesRulesAndTimeout) {
  SimTavel host(HostWithUsers::quietOptions());
  Fixture fixture;
  fixture.users.push_back({"a", "b", "administrator", {}});
  fixture.resources.emplace_back("/system/name", Resource(ResourceValue(std::string("TX"))));
  fixture.autoLogin.push_back({"kiosk", "a"});
  fixture.sessionTimeoutSeconds = 42;
  host.applyFixture(fixture);
  Fixture later;
  later.resources.emplace_back("/system/name", Resource(ResourceValue(std::string("TX-2"))));
  host.applyFixture(later);
  EXPECT_EQ("TX-2", host.peek("/system/name")->values.at("value").getStringValue());
  EXPECT_TRUE(host.peek("/user/users/a").has_value());
  std::string session = host.openSession("a");
  kelo::test::NamedPluginInfo info;
  ResourceAction fresh(CCRUD::Command, "/session/command/newSession", &info, session);
  std::string client = host.processResourceAction(fresh).values.at("sessionId").getStringValue();
  ResourceAction autoLogin(CCRUD::Command, "/user/command/autoLogin", text("host", "kiosk"), &info,
                           client);
  EXPECT_EQ("a", host.processResourceAction(autoLogin).values.at("username").getStringValue());
}

TEST(SimTavelTest, InternalActionsNeedNoSessionAndReachListeners) {
  HostWithUsers h;
  kelo::test::RecordingListener listener("/model/*", {CCRUD::Create, CCRUD::Update});
  h.host->addResourceListener(nullptr, &listener);
  ResourceAction action(CCRUD::Create, "/model/x", Resource(ResourceValue(3)), nullptr, "");
  h.host->processInternalAction(action);
  h.host->waitForListeners();
  EXPECT_EQ(1u, listener.calls().size());
  h.host->removeResourceListener(nullptr, &listener);
}

}  // namespace
}  // namespace halvor::sim
