// A server with one route, "/plaintext", answering "Hello, World!" as text/plain.
// Usage: bench-web-plaintext [--threads N] [--port P]
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <string>
#include <thread>

#include "kelo/web/Web.h"

using namespace halvor::kelo::web;

namespace {

HttpAppFramework* gApp = nullptr;

void onSignal(int) {
  if (gApp != nullptr) gApp->quit();
}

}  // namespace

int main(int argc, char** argv) {
  std::size_t threads = 1;
  int port = 8080;
  for (int i = 1; i + 1 < argc; i += 2) {
    std::string option = argv[i];
    if (option == "--threads") {
      threads = static_cast<std::size_t>(std::atoi(argv[i + 1]));
    } else if (option == "--port") {
      port = std::atoi(argv[i + 1]);
    } else {
      std::cerr << "usage: bench-web-plaintext [--threads N] [--port P]\n";
      return 2;
    }
  }
  HttpAppFramework application;
  gApp = &application;
  application.setThreadNum(threads);
  application.config().idleConnectionTimeout = 0;
  // Every load generator connects from one address.
  application.config().maxConnectionsPerIp = 0;
  application.addListener("0.0.0.0", static_cast<std::uint16_t>(port));
  application.registerHandler("/plaintext",
                              [](const HttpRequestPtr&, ResponseCallback&& callback) {
                                auto response = HttpResponse::newHttpResponse();
                                response->setContentTypeCode(CT_TEXT_PLAIN);
                                response->setBody("Hello, World!");
                                callback(response);
                              },
                              {Get});
  std::signal(SIGINT, onSignal);
  std::signal(SIGTERM, onSignal);
  try {
    application.run();
  } catch (const std::exception& error) {
    std::cerr << error.what() << "\n";
    return 1;
  }
  return 0;
}
