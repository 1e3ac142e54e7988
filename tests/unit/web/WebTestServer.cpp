#include "WebTestServer.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

namespace halvor::kelo::test {

TestCertificate::TestCertificate() {
  char pattern[] = "/tmp/kelo-web-cert-XXXXXX";
  if (::mkdtemp(pattern) == nullptr) throw std::runtime_error("mkdtemp failed");
  directory_ = pattern;
  certFile_ = directory_ + "/server.crt";
  keyFile_ = directory_ + "/server.key";
  std::string command =
      "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 2 "
      "-subj /CN=localhost -keyout " +
      keyFile_ + " -out " + certFile_ + " >/dev/null 2>&1";
  if (std::system(command.c_str()) != 0) throw std::runtime_error("openssl req failed");
}

TestCertificate::~TestCertificate() {
  std::error_code ignored;
  std::filesystem::remove_all(directory_, ignored);
}

WebTestServer::WebTestServer(Configure configure, bool withTls, std::chrono::seconds watchdog)
    : app_(std::make_unique<web::HttpAppFramework>()) {
  watchdog_ = std::thread([this, watchdog] {
    std::unique_lock lock(mutex_);
    if (!stopped_.wait_for(lock, watchdog, [this] { return done_; })) {
      std::fprintf(stderr, "watchdog: the test did not finish within %lld s\n",
                   static_cast<long long>(watchdog.count()));
      std::abort();
    }
  });
  app_->addListener("127.0.0.1", 0);
  if (withTls) {
    certificate_ = std::make_unique<TestCertificate>();
    app_->addListener("127.0.0.1", 0, true, "file://" + certificate_->certFile(),
                      certificate_->keyFile());
  }
  if (configure) configure(*app_);
  std::exception_ptr failure;
  runner_ = std::thread([this] {
    try {
      app_->run();
    } catch (const std::exception& error) {
      std::fprintf(stderr, "run() threw: %s\n", error.what());
    }
  });
  if (!eventually([this] { return app_->isRunning(); }, std::chrono::milliseconds(10000))) {
    stop();
    throw std::runtime_error("the test server did not start");
  }
  auto listeners = app_->getListeners();
  plainPort_ = listeners.at(0).toPort();
  if (withTls) tlsPort_ = listeners.at(1).toPort();
}

WebTestServer::~WebTestServer() {
  stop();
  app_.reset();
  {
    std::lock_guard lock(mutex_);
    done_ = true;
  }
  stopped_.notify_all();
  if (watchdog_.joinable()) watchdog_.join();
}

void WebTestServer::stop() {
  app_->quit();
  if (runner_.joinable()) runner_.join();
}

bool eventually(const std::function<bool()>& condition, std::chrono::milliseconds timeout) {
  auto deadline = std::chrono::steady_clock::now() + timeout;
  while (std::chrono::steady_clock::now() < deadline) {
    if (condition()) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return condition();
}

}  // namespace halvor::kelo::test
