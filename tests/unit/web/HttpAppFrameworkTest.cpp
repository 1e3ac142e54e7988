#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <thread>

#include "HttpClient.h"
#include "WebTestServer.h"
#include "kelo/web/HttpAppFramework.h"

using namespace halvor::kelo::web;
using halvor::kelo::test::eventually;
using halvor::kelo::test::HttpClient;
using halvor::kelo::test::HttpReply;
using halvor::kelo::test::WebTestServer;
namespace fs = std::filesystem;

namespace {

HttpResponsePtr textResponse(const std::string& text) {
  auto resp = HttpResponse::newHttpResponse();
  resp->setContentTypeCode(CT_TEXT_PLAIN);
  resp->setBody(text);
  return resp;
}

// A controller in the member-function form: one object, made by the application.
struct PlaylistController {
  PlaylistController() { ++instances; }
  void getPlaylistWrapper(const HttpRequestPtr& req,
                          std::function<void(const HttpResponsePtr&)>&& callback,
                          std::string guid) {
    callback(textResponse("playlist " + guid + " " + req->getCookie("SessionID")));
  }
  void getItemWrapper(const HttpRequestPtr&, ResponseCallback&& callback, std::string guid,
                      std::string item) {
    callback(textResponse(guid + "/" + item));
  }
  static inline std::atomic<int> instances{0};
};

struct SimpleController : HttpSimpleControllerBase {
  void asyncHandleHttpRequest(const HttpRequestPtr& req, ResponseCallback&& callback) override {
    callback(
        textResponse(std::string(req->methodString()) + " " + req->path() + "?" + req->query()));
  }
};

struct CountingPlugin : Plugin<CountingPlugin> {
  void initAndStart(const Json::Value& config) override {
    name = config["name"].asString();
    ++started;
  }
  void shutdown() override { ++stopped; }
  std::string name;
  int started = 0;
  int stopped = 0;
};

void addEcho(HttpAppFramework& app) {
  app.registerHandler("/echo",
                      [](const HttpRequestPtr& req, ResponseCallback&& callback) {
                        callback(textResponse(std::string(req->body())));
                      },
                      {Post, Put});
}

TEST(HttpAppFrameworkTest, LambdaRouteWithParametersAndConstraints) {
  WebTestServer server([](HttpAppFramework& app) {
    app.registerHandler(
        "/1/api/files/{volume}/{name}",
        [](const HttpRequestPtr&, ResponseCallback&& callback, std::string volume,
           std::string name) { callback(textResponse(volume + ":" + name)); },
        {Get, Delete}, "files");
  });
  HttpClient client("127.0.0.1", server.port());
  HttpReply reply = client.get("/1/api/files/USB1/a%20b.txt");
  EXPECT_EQ(reply.status, 200);
  EXPECT_EQ(reply.body, "USB1:a b.txt");
  EXPECT_EQ(reply.header("Content-Type"), "text/plain; charset=utf-8");
  EXPECT_EQ(client.get("//1/api///files/USB1/x/").body, "USB1:x");
  HttpReply wrongMethod = client.request("POST", "/1/api/files/USB1/x");
  EXPECT_EQ(wrongMethod.status, 405);
  EXPECT_EQ(wrongMethod.header("Allow"), "GET, HEAD, DELETE");
  EXPECT_EQ(client.get("/1/api/files/USB1").status, 404);
}

TEST(HttpAppFrameworkTest, MemberFunctionRoutesShareOneObject) {
  PlaylistController::instances = 0;
  WebTestServer server([](HttpAppFramework& app) {
    app.registerHandler("/1/api/playlists/{guid}", &PlaylistController::getPlaylistWrapper, {Get},
                        "PlaylistController::getPlaylistWrapper");
    app.registerHandler("/1/api/playlists/{guid}/items/{item}", &PlaylistController::getItemWrapper,
                        {Get}, "PlaylistController::getItemWrapper");
  });
  EXPECT_EQ(PlaylistController::instances, 1);
  HttpClient client("127.0.0.1", server.port());
  EXPECT_EQ(client.get("/1/api/playlists/g-1", {{"Cookie", "SessionID=s1"}}).body,
            "playlist g-1 s1");
  EXPECT_EQ(client.get("/1/api/playlists/g-1/items/7").body, "g-1/7");
}

TEST(HttpAppFrameworkTest, HandlerThatDoesNotTakeTheParametersIsRefused) {
  HttpAppFramework app;
  EXPECT_THROW(
      app.registerHandler("/x/{a}", [](const HttpRequestPtr&, ResponseCallback&&) {}, {Get}),
      std::invalid_argument);
  EXPECT_THROW(app.registerHandler("/x/{a}/{b}", &PlaylistController::getPlaylistWrapper, {Get}),
               std::invalid_argument);
}

TEST(HttpAppFrameworkTest, SimpleControllerAndHandlersInfo) {
  WebTestServer server([](HttpAppFramework& app) {
    app.registerHttpSimpleController("/1/api/login", std::make_shared<SimpleController>(),
                                     {Post, Get}, "Login");
    app.registerHandler("/any",
                        [](const HttpRequestPtr&, ResponseCallback&& cb) { cb(textResponse("")); });
  });
  HttpClient client("127.0.0.1", server.port());
  EXPECT_EQ(client.request("POST", "/1/api/login?x=1").body, "POST /1/api/login?x=1");
  auto info = server.app().getHandlersInfo();
  ASSERT_EQ(info.size(), 3u);
  EXPECT_EQ(info[0], std::make_tuple(std::string("/1/api/login"), Get, std::string("Login")));
  EXPECT_EQ(info[1], std::make_tuple(std::string("/1/api/login"), Post, std::string("Login")));
  EXPECT_EQ(std::get<1>(info[2]), Invalid);
}

TEST(HttpAppFrameworkTest, CookiesInAndOut) {
  WebTestServer server([](HttpAppFramework& app) {
    app.registerHandler("/c", [](const HttpRequestPtr& req, ResponseCallback&& callback) {
      auto resp = HttpResponse::newHttpResponse();
      std::string session = req->getCookie("SessionID");
      resp->addCookie("SessionID", "stale");
      resp->removeCookie("SessionID");
      resp->addCookie("SessionID", session + ";Path=/");
      callback(resp);
    });
  });
  HttpClient client("127.0.0.1", server.port());
  HttpReply reply = client.get("/c", {{"Cookie", "other=1; SessionID=abc"}});
  EXPECT_EQ(reply.headersNamed("Set-Cookie"),
            std::vector<std::string>{"SessionID=abc;Path=/; HttpOnly; SameSite=Lax"});
  EXPECT_EQ(client.get("/c").headersNamed("Set-Cookie"),
            std::vector<std::string>{"SessionID=;Path=/; HttpOnly; SameSite=Lax"});
}

namespace {

void addCookieRoute(HttpAppFramework& app) {
  app.registerHandler("/c", [](const HttpRequestPtr& req, ResponseCallback&& callback) {
    auto resp = HttpResponse::newHttpResponse();
    resp->addCookie("SessionID", req->getCookie("SessionID") + ";Path=/");
    callback(resp);
  });
}

}  // namespace

TEST(HttpAppFrameworkTest, CookiesOverTlsAreSecureAndAnswersCarryStrictTransportSecurity) {
  WebTestServer server(addCookieRoute, true);
  HttpClient tls("127.0.0.1", server.tlsPort(), true);
  HttpReply reply = tls.get("/c", {{"Cookie", "SessionID=abc"}});
  EXPECT_EQ(reply.headersNamed("Set-Cookie"),
            std::vector<std::string>{"SessionID=abc;Path=/; HttpOnly; SameSite=Lax; Secure"});
  EXPECT_EQ(reply.header("Strict-Transport-Security"), "max-age=31536000");
  EXPECT_EQ(tls.get("/nothing-here").header("Strict-Transport-Security"), "max-age=31536000");
  HttpClient plain("127.0.0.1", server.port());
  HttpReply plainReply = plain.get("/c", {{"Cookie", "SessionID=abc"}});
  EXPECT_EQ(plainReply.headersNamed("Set-Cookie"),
            std::vector<std::string>{"SessionID=abc;Path=/; HttpOnly; SameSite=Lax"});
  EXPECT_EQ(plainReply.header("Strict-Transport-Security"), "");
}

TEST(HttpAppFrameworkTest, SameSiteAndStrictTransportSecurityCanBeSwitchedOff) {
  WebTestServer server(
      [](HttpAppFramework& app) {
        addCookieRoute(app);
        app.config().cookieSameSite.clear();
        app.config().strictTransportSecurity.clear();
      },
      true);
  HttpClient tls("127.0.0.1", server.tlsPort(), true);
  HttpReply reply = tls.get("/c", {{"Cookie", "SessionID=abc"}});
  EXPECT_EQ(reply.headersNamed("Set-Cookie"),
            std::vector<std::string>{"SessionID=abc;Path=/; HttpOnly; Secure"});
  EXPECT_EQ(reply.header("Strict-Transport-Security"), "");
}

TEST(HttpAppFrameworkTest, AdvicesRunInOrder) {
  std::atomic<int> beginning{0};
  WebTestServer server([&beginning](HttpAppFramework& app) {
    app.registerBeginningAdvice([&beginning] { ++beginning; });
    app.registerHttpResponseCreationAdvice([](const HttpResponsePtr& resp) {
      resp->addHeader("Access-Control-Allow-Origin", "http://front");
    });
    app.registerPreRoutingAdvice(
        [](const HttpRequestPtr& req, AdviceCallback&& callback, AdviceChainCallback&& chain) {
          if (req->method() != Options) return chain();
          auto resp = HttpResponse::newHttpResponse();
          resp->addHeader("Allow", "GET, PUT, PATCH, POST, DELETE, OPTIONS");
          resp->setStatusCode(200);
          resp->setContentTypeCode(CT_TEXT_PLAIN);
          callback(resp);
        });
    app.registerHandler("/made", [](const HttpRequestPtr&, ResponseCallback&& callback) {
      auto resp = HttpResponse::newHttpResponse();
      // Made on the I/O thread: the creation advice has already run.
      resp->setBody(resp->getHeader("Access-Control-Allow-Origin"));
      callback(resp);
    });
  });
  EXPECT_EQ(beginning, 1);
  HttpClient client("127.0.0.1", server.port());
  HttpReply options = client.request("OPTIONS", "/no/route/here");
  EXPECT_EQ(options.status, 200);
  EXPECT_EQ(options.body, "");
  EXPECT_EQ(options.header("Allow"), "GET, PUT, PATCH, POST, DELETE, OPTIONS");
  EXPECT_EQ(options.headersNamed("Access-Control-Allow-Origin").size(), 1u);
  HttpReply made = client.get("/made");
  EXPECT_EQ(made.body, "http://front");
  EXPECT_EQ(made.headersNamed("Access-Control-Allow-Origin").size(), 1u);
  // Responses of the layer itself get it too.
  EXPECT_EQ(client.get("/nothing").header("Access-Control-Allow-Origin"), "http://front");
}

TEST(HttpAppFrameworkTest, AsynchronousResponseFromAnotherThread) {
  std::vector<std::thread> workers;
  std::mutex workersMutex;
  {
    WebTestServer server([&](HttpAppFramework& app) {
      app.registerHandler("/slow", [&](const HttpRequestPtr& req, ResponseCallback&& callback) {
        std::lock_guard lock(workersMutex);
        workers.emplace_back([req, callback = std::move(callback)] {
          std::this_thread::sleep_for(std::chrono::milliseconds(50));
          callback(textResponse("late " + req->getParameter("n")));
        });
      });
    });
    HttpClient client("127.0.0.1", server.port());
    EXPECT_EQ(client.get("/slow?n=1").body, "late 1");
    EXPECT_EQ(client.get("/slow?n=2").body, "late 2");
    std::lock_guard lock(workersMutex);
    for (auto& worker : workers) worker.join();
  }
}

TEST(HttpAppFrameworkTest, ThrowingHandlerGives500AndServingGoesOn) {
  WebTestServer server([](HttpAppFramework& app) {
    app.registerHandler("/throw", [](const HttpRequestPtr&, ResponseCallback&&) {
      throw std::runtime_error("boom");
    });
    app.registerHandler("/ok", [](const HttpRequestPtr&, ResponseCallback&& callback) {
      callback(textResponse("ok"));
    });
  });
  HttpClient client("127.0.0.1", server.port());
  EXPECT_EQ(client.get("/throw").status, 500);
  EXPECT_EQ(client.get("/ok").body, "ok");
}

TEST(HttpAppFrameworkTest, AnswerStatusAnyNumberAndCloseConnection) {
  WebTestServer server([](HttpAppFramework& app) {
    app.registerHandler("/gone", [](const HttpRequestPtr&, ResponseCallback&& callback) {
      auto resp = HttpResponse::newHttpResponse();
      resp->setStatusCode(440);
      resp->setCloseConnection(true);
      callback(resp);
    });
  });
  HttpClient client("127.0.0.1", server.port());
  HttpReply reply = client.get("/gone");
  EXPECT_EQ(reply.status, 440);
  EXPECT_EQ(reply.header("Connection"), "close");
  EXPECT_EQ(reply.header("Content-Length"), "0");
  EXPECT_FALSE(client.isConnected());
}

TEST(HttpAppFrameworkTest, KeepAliveAndPipelinedRequestsAnsweredInOrder) {
  WebTestServer server([](HttpAppFramework& app) {
    app.registerHandler("/n/{n}",
                        [](const HttpRequestPtr&, ResponseCallback&& callback, std::string n) {
                          if (n == "1") {
                            // The first answer comes last: order must still hold.
                            std::thread([callback = std::move(callback)] {
                              std::this_thread::sleep_for(std::chrono::milliseconds(100));
                              callback(textResponse("one"));
                            }).detach();
                            return;
                          }
                          callback(textResponse("n" + n));
                        });
  });
  HttpClient client("127.0.0.1", server.port());
  std::string pipeline;
  for (int i = 1; i <= 4; ++i) {
    pipeline += "GET /n/" + std::to_string(i) + " HTTP/1.1\r\nHost: x\r\n\r\n";
  }
  client.sendRaw(pipeline);
  EXPECT_EQ(client.readReply().body, "one");
  EXPECT_EQ(client.readReply().body, "n2");
  EXPECT_EQ(client.readReply().body, "n3");
  EXPECT_EQ(client.readReply().body, "n4");
  EXPECT_EQ(client.get("/n/5").body, "n5");
  EXPECT_EQ(server.app().connectionCount(), 1u);
}

TEST(HttpAppFrameworkTest, HeadHasLengthButNoBody) {
  WebTestServer server([](HttpAppFramework& app) {
    app.registerHandler("/h",
                        [](const HttpRequestPtr&, ResponseCallback&& callback) {
                          callback(textResponse("twelve bytes"));
                        },
                        {Get});
  });
  HttpClient client("127.0.0.1", server.port());
  HttpReply head = client.request("HEAD", "/h");
  EXPECT_EQ(head.status, 200);
  EXPECT_EQ(head.header("Content-Length"), "12");
  EXPECT_EQ(head.body, "");
  EXPECT_EQ(client.get("/h").body, "twelve bytes");
}

TEST(HttpAppFrameworkTest, UnknownMethodGets405) {
  WebTestServer server([](HttpAppFramework& app) { addEcho(app); });
  HttpClient client("127.0.0.1", server.port());
  client.sendRaw("BREW /echo HTTP/1.1\r\nHost: x\r\n\r\n");
  EXPECT_EQ(client.readReply().status, 405);
  EXPECT_EQ(client.request("POST", "/echo", "still here").body, "still here");
}

TEST(HttpAppFrameworkTest, TlsListenerServesTheSameRoutes) {
  WebTestServer server([](HttpAppFramework& app) { addEcho(app); }, true);
  HttpClient plain("127.0.0.1", server.port());
  HttpClient secure("127.0.0.1", server.tlsPort(), true);
  EXPECT_EQ(plain.request("POST", "/echo", "plain").body, "plain");
  EXPECT_EQ(secure.request("POST", "/echo", "secure").body, "secure");
  EXPECT_EQ(secure.request("PUT", "/echo", "again").body, "again");
  EXPECT_EQ(secure.get("/missing").status, 404);
}

TEST(HttpAppFrameworkTest, BindFailureIsAClearError) {
  WebTestServer first([](HttpAppFramework&) {});
  HttpAppFramework second;
  second.addListener("127.0.0.1", first.port());
  try {
    second.run();
    FAIL() << "run() did not throw";
  } catch (const std::runtime_error& error) {
    EXPECT_EQ(std::string(error.what()),
              "Cannot bind 127.0.0.1:" + std::to_string(first.port()) + ": Address already in use");
  }
  EXPECT_FALSE(second.isRunning());
}

TEST(HttpAppFrameworkTest, GarbageOnTheTlsPortIsClosedAndOthersAreServed) {
  WebTestServer server(
      [](HttpAppFramework& app) {
        addEcho(app);
        app.config().idleConnectionTimeout = 1;
      },
      true);
  // Not TLS at all: refused at once.
  HttpClient plain("127.0.0.1", server.tlsPort());  // plain TCP to the TLS port
  plain.sendRaw("GET /echo HTTP/1.1\r\nHost: x\r\n\r\n");
  EXPECT_TRUE(plain.waitForClose(std::chrono::seconds(5)));
  // Handshake records of a version no TLS has; a stalled handshake would end at the idle timeout.
  HttpClient stalled("127.0.0.1", server.tlsPort());
  stalled.sendRaw(std::string(64, '\x16'));
  EXPECT_TRUE(stalled.waitForClose(std::chrono::seconds(5)));

  HttpClient secure("127.0.0.1", server.tlsPort(), true);
  EXPECT_EQ(secure.request("POST", "/echo", "after garbage").body, "after garbage");
}

TEST(HttpAppFrameworkTest, MissingTlsFilesAreAClearError) {
  HttpAppFramework app;
  app.addListener("127.0.0.1", 0, true, "file:///nonexistent/server.crt", "/nonexistent/k.key");
  try {
    app.run();
    FAIL() << "run() did not throw";
  } catch (const std::runtime_error& error) {
    EXPECT_NE(std::string(error.what()).find("/nonexistent/server.crt"), std::string::npos);
  }
}

TEST(HttpAppFrameworkTest, PluginsFromTheConfigurationFile) {
  char pattern[] = "/tmp/kelo-webapp-XXXXXX";
  int fd = ::mkstemp(pattern);
  ::close(fd);
  std::ofstream(pattern) << R"({"plugins": [{"name": "CountingPlugin", "config": {"name": "q"}}]})";
  CountingPlugin* plugin = nullptr;
  {
    WebTestServer server([&](HttpAppFramework& app) {
      app.registerPluginType<CountingPlugin>("CountingPlugin");
      app.loadConfigFile(pattern);
      plugin = app.getPlugin<CountingPlugin>();
      ASSERT_NE(plugin, nullptr);
      EXPECT_EQ(plugin->started, 0);
      app.registerBeginningAdvice([&app] {
        // Plug-ins are started before the beginning advice.
        EXPECT_EQ(app.getPlugin<CountingPlugin>()->started, 1);
      });
    });
    EXPECT_EQ(plugin->name, "q");
    EXPECT_EQ(plugin->started, 1);
    server.stop();
    EXPECT_EQ(plugin->stopped, 1);
  }
  std::remove(pattern);
}

TEST(HttpAppFrameworkTest, UnknownPluginIsAnError) {
  HttpAppFramework app;
  EXPECT_THROW(app.loadConfigJson(Json::Value::null), std::runtime_error);
  Json::Value root;
  root["plugins"][0]["name"] = "Nobody";
  EXPECT_THROW(app.loadConfigJson(root), std::runtime_error);
  EXPECT_EQ(app.getPlugin<CountingPlugin>(), nullptr);
}

TEST(HttpAppFrameworkTest, QuitBeforeRunReturnsAtOnce) {
  HttpAppFramework app;
  app.addListener("127.0.0.1", 0);
  app.quit();
  app.run();
  EXPECT_FALSE(app.isRunning());
}

class StaticFileServingTest : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/kelo-docroot-XXXXXX";
    ASSERT_NE(::mkdtemp(pattern), nullptr);
    base = pattern;
    fs::create_directories(base / "www" / "js");
    std::ofstream(base / "www" / "index.html") << "<html>front</html>";
    std::ofstream(base / "www" / "js" / "app.js") << "let a = 1;";
    std::ofstream(base / "www" / "drogon-config.json") << "{}";
    std::ofstream(base / "www" / "server.key") << "KEY";
    std::ofstream(base / "secret.html") << "outside";
    server = std::make_unique<WebTestServer>([this](HttpAppFramework& app) {
      app.config().documentRoot = (base / "www").string();
      addEcho(app);
    });
    client = std::make_unique<HttpClient>("127.0.0.1", server->port());
  }
  void TearDown() override {
    client.reset();
    server.reset();
    fs::remove_all(base);
  }
  int status(const std::string& target) {
    HttpClient fresh("127.0.0.1", server->port());
    return fresh.get(target).status;
  }
  fs::path base;
  std::unique_ptr<WebTestServer> server;
  std::unique_ptr<HttpClient> client;
};

TEST_F(StaticFileServingTest, ServesTheFrontEnd) {
  HttpReply index = client->get("/");
  EXPECT_EQ(index.status, 200);
  EXPECT_EQ(index.body, "<html>front</html>");
  EXPECT_EQ(index.header("Content-Type"), "text/html; charset=utf-8");
  HttpReply script = client->get("/js/app.js");
  EXPECT_EQ(script.body, "let a = 1;");
  EXPECT_EQ(script.header("Content-Type"), "application/javascript; charset=utf-8");
  EXPECT_EQ(client->request("HEAD", "/index.html").header("Content-Length"), "18");
}

TEST_F(StaticFileServingTest, NeverTheConfigurationOrKeys) {
  EXPECT_EQ(status("/drogon-config.json"), 404);
  EXPECT_EQ(status("/server.key"), 404);
}

TEST_F(StaticFileServingTest, TraversalAttemptsAreRefused) {
  EXPECT_EQ(status("/../secret.html"), 404);
  EXPECT_EQ(status("/%2e%2e/secret.html"), 404);
  EXPECT_EQ(status("/js/%2E%2E/%2e%2e/secret.html"), 404);
  EXPECT_EQ(status("/js%2f..%2f..%2fsecret.html"), 404);
  EXPECT_EQ(status("/..%5csecret.html"), 404);
  EXPECT_EQ(status(base.string() + "/secret.html"), 404);
  EXPECT_EQ(status("/index.html%00.js"), 400);
  EXPECT_EQ(status("/%zz"), 400);
}

TEST_F(StaticFileServingTest, OnlyGetAndHead) {
  EXPECT_EQ(client->request("POST", "/index.html", "x").status, 405);
  EXPECT_EQ(client->request("DELETE", "/nothing.html").status, 404);
}

}  // namespace
