// The plug-in inside the simulated host, in one process, with one extra simple-form route for
// load tests: GET "/1/bench/frame" reads "/bench/value" through a KeloResourceAction (two host
// reads: the locality list and the resource) and answers {"local":true,"value":"..."}.
// "/plaintext" is the web layer alone, in the same process, for comparison.
//
// Usage: bench-kelo-frame [--threads N] [--http-port P] [--https-port P]
// Prints one line "ready <http port> <https port>" when serving; SIGINT or SIGTERM stops it.
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <string>
#include <thread>

#include "EmbeddedHost.h"
#include "kelo/controllers/FamilyRoutes.h"
#include "kelo/controllers/KeloHttpController.h"
#include "kelo/handlers/http/KeloResourceAction.h"
#include "kelo/web/HttpAppFramework.h"
#include "sim/SimTavel.h"
#include "tavelabi/Resource.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::kelo::bench {

// KeloResourceAction's member function isLocalHost hides the field of its base.
bool markedLocal(const tavelabi::ResourceAction& action) { return action.isLocalHost; }

class GetBenchFrame : public web::KeloHttpController<GetBenchFrame> {
 public:
  KELO_ROUTES_BEGIN
  KELO_PATH("/bench/frame", web::Get)
  KELO_ROUTES_END

  void processHttpRequest(const web::HttpRequestPtr& req, web::HttpResponsePtr& resp,
                          tavelabi::ITavel* tavel, tavelabi::IPluginInfo* info,
                          std::string sessionId) override {
    KeloResourceAction action(tavelabi::CCRUD::Read, "/bench/value", info, sessionId, req);
    const tavelabi::Resource answer = tavel->processResourceAction(action);
    std::string body =
        markedLocal(action) ? "{\"local\":true,\"value\":\"" : "{\"local\":false,\"value\":\"";
    body += answer.values.at("value").getStringValue();
    body += "\"}";
    resp->setContentTypeCode(web::CT_APPLICATION_JSON);
    resp->setBody(std::move(body));
    resp->setStatusCode(200);
  }
};

int run(int argc, char** argv) {
  EmbeddedHost::Options options;
  options.name = "bench-kelo-frame";
  for (int i = 1; i + 1 < argc; i += 2) {
    const std::string option = argv[i];
    if (option == "--threads") {
      options.ioThreads = std::atoi(argv[i + 1]);
    } else if (option == "--http-port") {
      options.httpPort = std::atoi(argv[i + 1]);
    } else if (option == "--https-port") {
      options.httpsPort = std::atoi(argv[i + 1]);
    } else {
      std::cerr << "usage: bench-kelo-frame [--threads N] [--http-port P] [--https-port P]\n";
      return 2;
    }
  }

  const int signalFd = StopSignals::block();
  EmbeddedHost embedded(options);
  sim::SimTavel& host = embedded.host();
  host.addUser({"bench", "bench", "administrator", {}});
  tavelabi::ResourceAction seed(tavelabi::CCRUD::Create, "/bench/value",
                                tavelabi::Resource(tavelabi::ResourceValue("hello")), nullptr, "");
  host.processInternalAction(seed);
  host.openSession("bench", "bench-session");

  web::HttpAppFramework& application = embedded.application();
  FamilyRoutes::add<GetBenchFrame>(application);
  application.registerHandler(
      "/plaintext",
      [](const web::HttpRequestPtr&, web::ResponseCallback&& callback) {
        auto response = web::HttpResponse::newHttpResponse();
        response->setContentTypeCode(web::CT_TEXT_PLAIN);
        response->setBody("Hello, World!");
        callback(response);
      },
      {web::Get}, "Plain text");

  if (!embedded.start()) return 1;
  std::cout << "ready " << application.getListeners()[0].toPort() << " "
            << application.getListeners()[1].toPort() << std::endl;

  // The host's loop: about 100 passes a second until a signal arrives.
  while (!StopSignals::arrived(signalFd)) {
    embedded.runHostPass();
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return 0;
}

}  // namespace halvor::kelo::bench

int main(int argc, char** argv) { return halvor::kelo::bench::run(argc, argv); }
