#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <sstream>

#include "kelo/Kelo.h"
#include "kelo/web/HttpAppFramework.h"
#include "support/KeloCalls.h"
#include "support/KeloTestRoutes.h"
#include "support/KeloTestServer.h"
#include "tavelabi/TermTint.h"

namespace halvor::kelo {
namespace {

using tavelabi::PluginStatus;
using test::KeloAnswer;
using test::KeloTestServer;
using test::KeloTestServerOptions;

void expectOptionsAnswer(const KeloAnswer& resp) {
  EXPECT_EQ(resp.status, 200);
  EXPECT_EQ(resp.body, "");
  EXPECT_EQ(resp.header("Allow"), "GET, PUT, PATCH, POST, DELETE, OPTIONS");
  EXPECT_EQ(resp.header("Access-Control-Allow-Methods"), "GET, PUT, PATCH, POST, DELETE, OPTIONS");
  EXPECT_EQ(resp.header("Access-Control-Allow-Headers"), "Content-Type, Accept, x-csrftoken");
  EXPECT_EQ(resp.header("Access-Control-Allow-Credentials"), "true");
}

TEST(KeloServerTest, AGoodInitServesAndReportsOkAtTheNextConsume) {
  KeloTestServer server;
  server.start();
  EXPECT_TRUE(server.kelo().isRunning());
  EXPECT_TRUE(server.kelo().isWebServerConfigured());
  auto records = server.host().statusHistory();
  ASSERT_EQ(records.size(), 1u);
  EXPECT_EQ(records[0].code, PluginStatus::Initializing);
  EXPECT_EQ(server.kelo().currentStatus().getCode(), PluginStatus::Ok);
  server.kelo().consume(std::chrono::steady_clock::now());
  records = server.host().statusHistory();
  ASSERT_EQ(records.size(), 2u);
  EXPECT_EQ(records[1].code, PluginStatus::Ok);
  EXPECT_EQ(records[1].text, "OK");
  EXPECT_TRUE(server.host().peek("/versions/Kelo").has_value());
  EXPECT_TRUE(server.host().peek("/kelo/websocketConnectivities").has_value());
  EXPECT_TRUE(server.host().peek("/px3/localhostIp").has_value());
}

TEST(KeloServerTest, OptionsOnAPathWithoutRouteIsAnsweredOnBothPorts) {
  KeloTestServer server;
  server.start();
  const KeloAnswer http = test::callOnce(server.httpPort(), false, "OPTIONS", "/x");
  expectOptionsAnswer(http);
  EXPECT_FALSE(http.hasHeader("Access-Control-Allow-Origin"));
  expectOptionsAnswer(test::callOnce(server.httpsPort(), true, "OPTIONS", "/no/route"));
}

TEST(KeloServerTest, WithoutBypassAGetHasNoOriginHeader) {
  KeloTestServerOptions options;
  options.registerRoutes = test::registerTestRoutes;
  KeloTestServer server(options);
  server.start();
  const KeloAnswer resp = test::callOnce(server.httpPort(), false, "GET", "/1/test/resource");
  EXPECT_EQ(resp.status, 500);
  EXPECT_FALSE(resp.hasHeader("Access-Control-Allow-Origin"));
  EXPECT_FALSE(resp.hasHeader("Access-Control-Allow-Credentials"));
  const KeloAnswer options2 =
      test::callOnce(server.httpPort(), false, "OPTIONS", "/1/test/resource");
  expectOptionsAnswer(options2);
  EXPECT_FALSE(options2.hasHeader("Access-Control-Allow-Origin"));
}

TEST(KeloServerTest, BypassWithAnEmptyOriginSendsTheHeaderEmpty) {
  KeloTestServerOptions options;
  options.bypassCors = true;
  options.corsOrigin = "";
  KeloTestServer server(options);
  server.start();
  const KeloAnswer resp = test::callOnce(server.httpPort(), false, "GET", "/missing");
  EXPECT_TRUE(resp.hasHeader("Access-Control-Allow-Origin"));
  EXPECT_EQ(resp.header("Access-Control-Allow-Origin"), "");
  EXPECT_EQ(resp.header("Access-Control-Allow-Credentials"), "true");
  const KeloAnswer preflight = test::callOnce(server.httpsPort(), true, "OPTIONS", "/x");
  expectOptionsAnswer(preflight);
  std::size_t credentials = 0;
  for (const auto& [name, value] : preflight.headers) {
    credentials += name == "Access-Control-Allow-Credentials" ? 1 : 0;
  }
  EXPECT_EQ(credentials, 1u);
  EXPECT_NE(server.readLog().find("CORS Disabled!"), std::string::npos);
}

TEST(KeloServerTest, BypassNamesTheOrigin) {
  KeloTestServerOptions options;
  options.bypassCors = true;
  options.corsOrigin = "http://front.example:3000";
  KeloTestServer server(options);
  server.start();
  const KeloAnswer resp = test::callOnce(server.httpPort(), false, "GET", "/missing");
  EXPECT_EQ(resp.header("Access-Control-Allow-Origin"), "http://front.example:3000");
}

TEST(KeloServerTest, TheBeginningAdviceLogsRoutesAndPorts) {
  KeloTestServerOptions options;
  options.configurePorts = true;
  options.registerRoutes = [](web::HttpAppFramework& app) {
    test::registerTestRoutes(app);
    auto answer = [](const web::HttpRequestPtr&, web::ResponseCallback&& callback) {
      callback(web::HttpResponse::newHttpResponse());
    };
    app.registerHandler("/1/test/patched", answer, {web::Patch, web::Head}, "Patched");
    app.registerHandler("/1/test/anything", answer, {}, "Anything");
  };
  KeloTestServer server(options);
  server.start();
  const std::string log = server.readLog();
  EXPECT_NE(log.find("Register GET /1/test/resource GetTestResource"), std::string::npos) << log;
  EXPECT_NE(log.find("Register GET /1/test/resources/{name} "
                     "TestResourceHandler::getResourceWrapper"),
            std::string::npos)
      << log;
  EXPECT_NE(log.find("Register PUT /1/test/resources/{name} "
                     "TestResourceHandler::putResourceWrapper"),
            std::string::npos)
      << log;
  // The other methods are logged by number: HEAD 2, PATCH 6, a route without methods 7.
  EXPECT_NE(log.find("Register 2 /1/test/patched Patched"), std::string::npos) << log;
  EXPECT_NE(log.find("Register 6 /1/test/patched Patched"), std::string::npos) << log;
  EXPECT_NE(log.find("Register 7 /1/test/anything Anything"), std::string::npos) << log;
  EXPECT_NE(log.find(TermTint::brightYellow("Webserver listening for HTTP / HTTPS traffic on " +
                                            std::to_string(server.httpPort()) + " / " +
                                            std::to_string(server.httpsPort()))),
            std::string::npos)
      << log;
  EXPECT_NE(log.find("Using separate log file Kelo7"), std::string::npos);
  EXPECT_NE(log.find("Initializing Kelo ..."), std::string::npos);
}

TEST(KeloServerTest, ShutdownLeavesTheServerAnswering) {
  KeloTestServer server;
  server.start();
  server.kelo().shutdown();
  EXPECT_FALSE(server.kelo().isRunning());
  const auto records = server.host().statusHistory();
  EXPECT_EQ(records.back().code, PluginStatus::Stopped);
  EXPECT_EQ(records.back().text, "Kelo Shutting down.");
  EXPECT_EQ(test::callOnce(server.httpPort(), false, "OPTIONS", "/x").status, 200);
}

TEST(KeloServerTest, TheDestructorsSecondShutdownIsHarmless) {
  KeloTestServer server;
  server.start();
  server.kelo().shutdown();
  const std::size_t before = server.host().statusHistory().size();
  server.deletePlugin();
  const auto records = server.host().statusHistory();
  ASSERT_EQ(records.size(), before + 1);
  EXPECT_EQ(records.back().code, PluginStatus::Stopped);
  EXPECT_EQ(records.back().text, "Kelo Shutting down.");
}

TEST(KeloServerTest, ACertificateAppliedLaterRestartsTheHost) {
  KeloTestServer server;
  server.start();
  server.kelo().setRestartDue();
  server.kelo().consume(std::chrono::steady_clock::now());
  EXPECT_EQ(server.host().restartRequests(), 1u);
}

TEST(KeloServerTest, APortInUseEndsAsARuntimeFailure) {
  const int fd = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_ANY);
  ASSERT_EQ(bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
  ASSERT_EQ(listen(fd, 1), 0);
  socklen_t length = sizeof(address);
  getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length);
  const int busyPort = ntohs(address.sin_port);

  KeloTestServerOptions options;
  options.httpPortOverride = static_cast<std::uint16_t>(busyPort);
  KeloTestServer server(options);
  server.initOnly();
  ASSERT_TRUE(KeloTestServer::waitFor([&] {
    const auto records = server.host().statusHistory();
    return !records.empty() && records.back().code == PluginStatus::Stopped &&
           !server.kelo().isRunning();
  }));
  const PluginStatus status = server.kelo().currentStatus();
  EXPECT_EQ(status.getCode(), PluginStatus::RuntimeFailure);
  EXPECT_EQ(status.getText().rfind("Drogon : ", 0), 0u) << status.getText();
  EXPECT_NE(status.getText().find(std::to_string(busyPort)), std::string::npos);
  const auto records = server.host().statusHistory();
  ASSERT_GE(records.size(), 3u);
  EXPECT_EQ(records[records.size() - 2].code, PluginStatus::RuntimeFailure);
  server.kelo().consume(std::chrono::steady_clock::now());
  EXPECT_EQ(server.host().statusHistory().back().code, PluginStatus::RuntimeFailure);
  close(fd);
}

}  // namespace
}  // namespace halvor::kelo
