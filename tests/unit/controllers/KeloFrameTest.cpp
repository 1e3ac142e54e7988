#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

#include "kelo/Exceptions.h"
#include "kelo/Kelo.h"
#include "kelo/WebKeloInterface.h"
#include "kelo/controllers/FamilyRoutes.h"
#include "kelo/controllers/HttpController.h"
#include "kelo/controllers/KeloFrame.h"
#include "kelo/controllers/KeloHttpController.h"
#include "kelo/controllers/RouteTable.h"
#include "kelo/web/HttpAppFramework.h"
#include "sim/SimTavel.h"
#include "tavelabi/Exceptions.h"

namespace halvor::kelo {
namespace {

using Behaviour =
    std::function<void(const web::HttpRequestPtr&, web::HttpResponsePtr&, tavelabi::ITavel*,
                       tavelabi::IPluginInfo*, const std::string&)>;

// What the handler saw and does, set by each test.
struct Seen {
  static inline Behaviour behaviour;
  static inline bool called = false;
  static inline std::string sessionId;
  static inline std::string param;
  static inline tavelabi::ITavel* tavel = nullptr;
  static inline tavelabi::IPluginInfo* info = nullptr;
};

class SimpleHandler : public web::KeloHttpController<SimpleHandler> {
 public:
  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override {
    Seen::called = true;
    Seen::sessionId = sessionId;
    Seen::tavel = tavel;
    Seen::info = info;
    if (Seen::behaviour) {
      Seen::behaviour(req, resp, tavel, info, sessionId);
    }
  }
};

class ParamHandler : public web::HttpController<ParamHandler> {
 public:
  virtual void getThing(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                        tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info, std::string sessionId,
                        std::string name) {
    Seen::called = true;
    Seen::sessionId = sessionId;
    Seen::param = name;
    if (Seen::behaviour) {
      Seen::behaviour(req, resp, tavel, info, sessionId);
    }
  }
};

class KeloFrameTest : public ::testing::Test {
 protected:
  KeloFrameTest() : kelo(&host) {
    web::HttpAppFramework& application = web::app();
    if (application.getPlugin<WebKeloInterface>() == nullptr) {
      application.registerPluginType<WebKeloInterface>("WebKeloInterface");
      Json::Value config;
      config["plugins"][0]["name"] = "WebKeloInterface";
      application.loadConfigJson(config);
    }
    WebKeloInterface* plugin = application.getPlugin<WebKeloInterface>();
    plugin->tavel = &host;
    plugin->pluginInfo = &kelo;
    host.addUser({"admin", "pw", "administrator", {}});
    host.addUser({"viewer", "pw", "read-only", {}});
    Seen::behaviour = nullptr;
    Seen::called = false;
  }

  web::HttpResponsePtr callSimple(const std::string& cookie = "") {
    auto req = web::HttpRequest::newHttpRequest();
    req->setMethod(web::Get);
    if (!cookie.empty()) {
      req->addHeader("Cookie", "SessionID=" + cookie);
    }
    web::HttpResponsePtr answer;
    handler.asyncHandleHttpRequest(req,
                                   [&answer](const web::HttpResponsePtr& resp) { answer = resp; });
    return answer;
  }

  web::HttpResponsePtr callParam(const std::string& name, const std::string& cookie = "") {
    auto req = web::HttpRequest::newHttpRequest();
    req->setMethod(web::Get);
    if (!cookie.empty()) {
      req->addHeader("Cookie", "SessionID=" + cookie);
    }
    web::HttpResponsePtr answer;
    auto wrapper = RouteTable<ParamHandler>::wrapperOf(paramHandler, &ParamHandler::getThing);
    wrapper(
        req, [&answer](const web::HttpResponsePtr& resp) { answer = resp; }, name);
    return answer;
  }

  sim::SimTavel host{[] {
    sim::SimTavelOptions options;
    options.echoToConsole = false;
    return options;
  }()};
  Kelo kelo;
  SimpleHandler handler;
  std::shared_ptr<ParamHandler> paramHandler = std::make_shared<ParamHandler>();
};

TEST_F(KeloFrameTest, WithoutACookieTheHandlerGetsAnEmptySession) {
  auto resp = callSimple();
  ASSERT_NE(resp, nullptr);
  EXPECT_TRUE(Seen::called);
  EXPECT_EQ(Seen::sessionId, "");
  EXPECT_EQ(resp->getCookie("SessionID"), ";Path=/");
  EXPECT_EQ(resp->cookies().size(), 1u);
  EXPECT_EQ(resp->statusCode(), 200);
  EXPECT_FALSE(resp->ifCloseConnection());
}

TEST_F(KeloFrameTest, TheClientsSessionIsSentStraightBack) {
  auto resp = callSimple("abc123");
  EXPECT_EQ(Seen::sessionId, "abc123");
  EXPECT_EQ(resp->getCookie("SessionID"), "abc123;Path=/");
}

TEST_F(KeloFrameTest, TheHandlerGetsTheHostFromThePlugin) {
  callSimple();
  EXPECT_EQ(Seen::tavel, &host);
  EXPECT_EQ(Seen::info, &kelo);
}

TEST_F(KeloFrameTest, ADeadSessionIs440WithTheBodyUnchangedAndClosed) {
  Seen::behaviour = [](const web::HttpRequestPtr&, web::HttpResponsePtr& resp,
                       tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                       const std::string& sessionId) {
    tavelabi::ResourceAction read(tavelabi::CCRUD::Read, "/x", info, sessionId);
    tavel->processResourceAction(read);
    resp->setBody("never");
  };
  auto resp = callSimple("dead-session");
  EXPECT_EQ(resp->statusCode(), 440);
  EXPECT_EQ(resp->body(), "");
  EXPECT_TRUE(resp->ifCloseConnection());
  EXPECT_EQ(resp->getCookie("SessionID"), "dead-session;Path=/");
}

TEST_F(KeloFrameTest, ARefusedRightIs403KeepingWhatTheHandlerWrote) {
  const std::string session = host.openSession("viewer");
  Seen::behaviour = [](const web::HttpRequestPtr&, web::HttpResponsePtr& resp,
                       tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                       const std::string& sessionId) {
    resp->setBody("partial");
    resp->setContentTypeCode(web::CT_APPLICATION_JSON);
    tavelabi::ResourceAction update(tavelabi::CCRUD::Update, "/x", info, sessionId);
    tavel->processResourceAction(update);
  };
  auto resp = callSimple(session);
  EXPECT_EQ(resp->statusCode(), 403);
  EXPECT_EQ(resp->body(), "partial");
  EXPECT_EQ(resp->contentType(), web::CT_APPLICATION_JSON);
  EXPECT_TRUE(resp->ifCloseConnection());
}

TEST_F(KeloFrameTest, AMissingQueryParameterIs500WithItsText) {
  Seen::behaviour = [](const web::HttpRequestPtr&, web::HttpResponsePtr&, tavelabi::ITavel*,
                       tavelabi::IPluginInfo*,
                       const std::string&) { throw RequestMissingQueryParameter("path"); };
  auto resp = callSimple();
  EXPECT_EQ(resp->statusCode(), 500);
  EXPECT_EQ(resp->contentType(), web::CT_TEXT_PLAIN);
  EXPECT_NE(resp->body().find("Request missing query parameter: path."), std::string::npos)
      << resp->body();
  EXPECT_NE(resp->body().find("RequestMissingQueryParameter"), std::string::npos) << resp->body();
  EXPECT_TRUE(resp->ifCloseConnection());
}

TEST_F(KeloFrameTest, AnyOtherFailureIs500) {
  Seen::behaviour = [](const web::HttpRequestPtr&, web::HttpResponsePtr& resp, tavelabi::ITavel*,
                       tavelabi::IPluginInfo*, const std::string&) {
    resp->setBody("{\"half\":");
    tavelabi::ResourceValue::Map empty;
    (void)empty.at("value");
  };
  auto resp = callSimple();
  EXPECT_EQ(resp->statusCode(), 500);
  EXPECT_NE(resp->body().find("map::at"), std::string::npos) << resp->body();
  EXPECT_EQ(resp->body().find("{\"half\":"), std::string::npos);
}

TEST_F(KeloFrameTest, AHostFailureOtherThanTheTwoIs500) {
  const std::string session = host.openSession("admin");
  Seen::behaviour = [](const web::HttpRequestPtr&, web::HttpResponsePtr&, tavelabi::ITavel* tavel,
                       tavelabi::IPluginInfo* info, const std::string& sessionId) {
    tavelabi::ResourceAction read(tavelabi::CCRUD::Read, "/no/such/path", info, sessionId);
    tavel->processResourceAction(read);
  };
  auto resp = callSimple(session);
  EXPECT_EQ(resp->statusCode(), 500);
  EXPECT_NE(resp->body().find("No resource at /no/such/path"), std::string::npos) << resp->body();
}

TEST_F(KeloFrameTest, AnEmptyCallbackThrowsBadFunctionCallAfterTheHandler) {
  auto req = web::HttpRequest::newHttpRequest();
  EXPECT_THROW(handler.asyncHandleHttpRequest(req, web::ResponseCallback()),
               std::bad_function_call);
  EXPECT_TRUE(Seen::called);
  Seen::called = false;
  auto wrapper = RouteTable<ParamHandler>::wrapperOf(paramHandler, &ParamHandler::getThing);
  EXPECT_THROW(wrapper(req, web::ResponseCallback(), "n"), std::bad_function_call);
  EXPECT_TRUE(Seen::called);
}

TEST_F(KeloFrameTest, ThePathParameterFormPassesItsParameter) {
  auto resp = callParam("alpha", "s1");
  EXPECT_EQ(Seen::param, "alpha");
  EXPECT_EQ(Seen::sessionId, "s1");
  EXPECT_EQ(resp->getCookie("SessionID"), "s1;Path=/");
}

TEST_F(KeloFrameTest, ThePathParameterFormMapsFailuresAlike) {
  Seen::behaviour = [](const web::HttpRequestPtr&, web::HttpResponsePtr&, tavelabi::ITavel* tavel,
                       tavelabi::IPluginInfo* info, const std::string& sessionId) {
    tavelabi::ResourceAction read(tavelabi::CCRUD::Read, "/x", info, sessionId);
    tavel->processResourceAction(read);
  };
  auto dead = callParam("a", "gone");
  EXPECT_EQ(dead->statusCode(), 440);
  EXPECT_TRUE(dead->ifCloseConnection());
  Seen::behaviour = [](const web::HttpRequestPtr&, web::HttpResponsePtr&, tavelabi::ITavel*,
                       tavelabi::IPluginInfo*, const std::string&) { throw InvalidJson("bad"); };
  auto failed = callParam("a");
  EXPECT_EQ(failed->statusCode(), 500);
  EXPECT_NE(failed->body().find("Invalid Json: bad."), std::string::npos);
}

TEST(KeloFrameVersionTest, RoutesAreServedUnderTheVersionPrefix) {
  EXPECT_EQ(KeloFrame::versionedPath("/api/login"), "/1/api/login");
}

class DeclaringHandler : public web::HttpController<DeclaringHandler> {
 public:
  KELO_ROUTES_BEGIN
  KELO_ROUTE(getItem, "/items/{guid}", web::Get)
  KELO_ROUTE(moveItem, "/items/{guid}/to/{place}", web::Put, web::Post)
  KELO_ROUTES_END

  virtual void getItem(const web::HttpRequestPtr&, web::HttpResponsePtr&, tavelabi::ITavel*,
                       tavelabi::IPluginInfo*, std::string, std::string) {}
  virtual void moveItem(const web::HttpRequestPtr&, web::HttpResponsePtr&, tavelabi::ITavel*,
                        tavelabi::IPluginInfo*, std::string, std::string, std::string) {}
};

class DeclaringSimpleHandler : public web::KeloHttpController<DeclaringSimpleHandler> {
 public:
  KELO_ROUTES_BEGIN
  KELO_PATH("/simple", web::Get, web::Delete)
  KELO_ROUTES_END

  void processHttpRequest(const web::HttpRequestPtr&, web::HttpResponsePtr&, tavelabi::ITavel*,
                          tavelabi::IPluginInfo*, std::string) override {}
};

TEST(RouteDeclarationTest, DeclaredRoutesAreRegisteredUnderTheVersionPrefixWithTheirLogNames) {
  web::HttpAppFramework application;
  FamilyRoutes::add<DeclaringHandler, DeclaringSimpleHandler>(application);
  using Info = web::HttpAppFramework::HandlerInfo;
  const std::vector<Info> expected{
      {"/1/items/{guid}", web::Get, "DeclaringHandler::getItemWrapper"},
      {"/1/items/{guid}/to/{place}", web::Post, "DeclaringHandler::moveItemWrapper"},
      {"/1/items/{guid}/to/{place}", web::Put, "DeclaringHandler::moveItemWrapper"},
      {"/1/simple", web::Get, "DeclaringSimpleHandler"},
      {"/1/simple", web::Delete, "DeclaringSimpleHandler"}};
  EXPECT_EQ(application.getHandlersInfo(), expected);
}

TEST(RouteDeclarationTest, AClassDeclaringARouteThatAnotherHoldsIsRefused) {
  web::HttpAppFramework application;
  FamilyRoutes::add<DeclaringHandler>(application);
  EXPECT_THROW(FamilyRoutes::add<DeclaringHandler>(application), std::invalid_argument);
}

}  // namespace
}  // namespace halvor::kelo
