#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

#include "kelo/Kelo.h"
#include "kelo/WebKeloInterface.h"
#include "kelo/controllers/HttpController.h"
#include "kelo/controllers/KeloFrame.h"
#include "kelo/controllers/RouteTable.h"
#include "kelo/web/HttpAppFramework.h"
#include "sim/SimTavel.h"
#include "tavelabi/Exceptions.h"

namespace halvor::kelo {
namespace {

// A route of the deferred form: keeps the callback it is handed, or throws.
class LaterHandler : public web::HttpController<LaterHandler> {
 public:
  virtual void putLater(const web::HttpRequestPtr& /*req*/, web::HttpResponsePtr& resp,
                        tavelabi::ITavel* /*tavel*/, tavelabi::IPluginInfo* /*info*/,
                        std::string sessionId, web::ResponseCallback callback, std::string name) {
    seenSession = sessionId;
    seenName = name;
    if (failure) failure();
    kept = resp;
    keptCallback = std::move(callback);
  }

  std::function<void()> failure;
  std::string seenSession;
  std::string seenName;
  web::HttpResponsePtr kept;
  web::ResponseCallback keptCallback;
};

class KeloFrameDeferredTest : public ::testing::Test {
 protected:
  KeloFrameDeferredTest() : kelo(&host) {
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
  }

  void call(const std::string& cookie) {
    auto req = web::HttpRequest::newHttpRequest();
    req->setMethod(web::Put);
    req->addHeader("Cookie", "SessionID=" + cookie);
    auto wrapper = RouteTable<LaterHandler>::deferredWrapperOf(handler, &LaterHandler::putLater);
    wrapper(
        req,
        [this](const web::HttpResponsePtr& resp) {
          ++answers;
          answer = resp;
        },
        "n1");
  }

  sim::SimTavel host{[] {
    sim::SimTavelOptions options;
    options.echoToConsole = false;
    return options;
  }()};
  Kelo kelo;
  std::shared_ptr<LaterHandler> handler = std::make_shared<LaterHandler>();
  int answers = 0;
  web::HttpResponsePtr answer;
};

TEST_F(KeloFrameDeferredTest, TheFrameDoesNotAnswerWhatTheHandlerAnswersLater) {
  call("s7");
  EXPECT_EQ(answers, 0);
  EXPECT_EQ(handler->seenSession, "s7");
  EXPECT_EQ(handler->seenName, "n1");
  ASSERT_NE(handler->kept, nullptr);
  // The cookie is carried as in every route with path parameters.
  EXPECT_EQ(handler->kept->getCookie("SessionID"), "s7;Path=/");
  handler->kept->setStatusCode(200);
  handler->keptCallback(handler->kept);
  EXPECT_EQ(answers, 1);
  EXPECT_EQ(answer, handler->kept);
}

TEST_F(KeloFrameDeferredTest, AFailureBeforeTheHandOverIsAnsweredAsTheFrameMapsIt) {
  handler->failure = [] { throw tavelabi::AuthorizationFailure("no"); };
  call("s7");
  ASSERT_EQ(answers, 1);
  EXPECT_EQ(answer->statusCode(), 403);
  handler->failure = [] { throw tavelabi::NonExistentSessionException("gone"); };
  call("s7");
  ASSERT_EQ(answers, 2);
  EXPECT_EQ(answer->statusCode(), 440);
  handler->failure = [] { throw std::out_of_range("map::at"); };
  call("s7");
  ASSERT_EQ(answers, 3);
  EXPECT_EQ(answer->statusCode(), 500);
  EXPECT_NE(answer->body().find("map::at"), std::string::npos);
}

}  // namespace
}  // namespace halvor::kelo
