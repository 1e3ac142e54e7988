#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "kelo/web/Web.h"

namespace halvor::kelo::test {

// A throwaway self-signed certificate and key for "localhost" in a temporary directory.
class TestCertificate {
 public:
  TestCertificate();
  ~TestCertificate();
  const std::string& certFile() const { return certFile_; }
  const std::string& keyFile() const { return keyFile_; }

 private:
  std::string directory_;
  std::string certFile_;
  std::string keyFile_;
};

// An application of its own, run in a thread on free ports: one plain listener, and a TLS one
// when asked. Aborts the test process when a test takes longer than the watchdog allows.
class WebTestServer {
 public:
  using Configure = std::function<void(web::HttpAppFramework&)>;

  explicit WebTestServer(Configure configure, bool withTls = false,
                         std::chrono::seconds watchdog = std::chrono::seconds(90));
  ~WebTestServer();

  web::HttpAppFramework& app() { return *app_; }
  std::uint16_t port() const { return plainPort_; }
  std::uint16_t tlsPort() const { return tlsPort_; }
  void stop();

 private:
  std::unique_ptr<web::HttpAppFramework> app_;
  std::unique_ptr<TestCertificate> certificate_;
  std::thread runner_;
  std::thread watchdog_;
  std::mutex mutex_;
  std::condition_variable stopped_;
  bool done_ = false;
  std::uint16_t plainPort_ = 0;
  std::uint16_t tlsPort_ = 0;
};

// Polls `condition` until it holds or `timeout` passes.
bool eventually(const std::function<bool()>& condition,
                std::chrono::milliseconds timeout = std::chrono::milliseconds(5000));

}  // namespace halvor::kelo::test
