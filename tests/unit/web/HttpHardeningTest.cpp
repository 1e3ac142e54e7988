#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "ConnectionLimiter.h"
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

// A bare TCP connection whose reading the test controls byte by byte.
class RawConnection {
 public:
  RawConnection(std::uint16_t port, int receiveBuffer = 0) {
    fd_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (receiveBuffer > 0) {
      ::setsockopt(fd_, SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof(receiveBuffer));
    }
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    connected_ = ::connect(fd_, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0;
  }
  ~RawConnection() { ::close(fd_); }
  RawConnection(const RawConnection&) = delete;
  RawConnection& operator=(const RawConnection&) = delete;

  bool connected() const { return connected_; }
  void send(const std::string& bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
      ssize_t sent = ::send(fd_, bytes.data() + done, bytes.size() - done, MSG_NOSIGNAL);
      if (sent <= 0) return;
      done += static_cast<std::size_t>(sent);
    }
  }
  // Up to `most` bytes, waiting at most `timeout` for the first; 0 at the end of the stream or
  // on an error, -1 when nothing came in time.
  long receive(std::size_t most, std::chrono::milliseconds timeout) {
    pollfd waiting{fd_, POLLIN, 0};
    if (::poll(&waiting, 1, static_cast<int>(timeout.count())) <= 0) return -1;
    std::vector<char> buffer(most);
    ssize_t got = ::recv(fd_, buffer.data(), most, 0);
    return got < 0 ? 0 : got;
  }

 private:
  int fd_ = -1;
  bool connected_ = false;
};

void addBigAnswer(HttpAppFramework& app, std::size_t size) {
  app.registerHandler("/big", [size](const HttpRequestPtr&, ResponseCallback&& callback) {
    auto resp = HttpResponse::newHttpResponse();
    resp->setBody(std::string(size, 'z'));
    callback(resp);
  });
}

TEST(HttpHardeningTest, APeerThatStopsReadingAnAnswerIsClosedAndOneThatReadsSlowlyIsNot) {
  constexpr std::size_t kBody = 24 * 1024 * 1024;
  WebTestServer server([](HttpAppFramework& app) {
    app.config().idleConnectionTimeout = 2;
    addBigAnswer(app, kBody);
  });
  const std::string request = "GET /big HTTP/1.1\r\nHost: x\r\n\r\n";
  RawConnection stalled(server.port(), 4096);
  RawConnection slow(server.port());
  ASSERT_TRUE(stalled.connected());
  ASSERT_TRUE(slow.connected());
  stalled.send(request);
  slow.send(request);
  // The slow reader takes well over the timeout for the whole answer, but never stops long.
  std::size_t slowBytes = 0;
  auto start = std::chrono::steady_clock::now();
  while (slowBytes < kBody) {
    long got = slow.receive(512 * 1024, std::chrono::milliseconds(3000));
    ASSERT_GT(got, 0) << "after " << slowBytes << " bytes";
    slowBytes += static_cast<std::size_t>(got);
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  EXPECT_GT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
  // The stalled one was closed meanwhile: what it can still read ends long before the body.
  std::size_t stalledBytes = 0;
  for (;;) {
    long got = stalled.receive(1024 * 1024, std::chrono::milliseconds(3000));
    ASSERT_NE(got, -1) << "the stalled connection is still open after " << stalledBytes;
    if (got == 0) break;
    stalledBytes += static_cast<std::size_t>(got);
  }
  EXPECT_LT(stalledBytes, kBody / 2);
}

void addCountingEcho(HttpAppFramework& app, std::atomic<int>& calls) {
  app.registerHandler("/echo", [&calls](const HttpRequestPtr& req, ResponseCallback&& callback) {
    ++calls;
    auto resp = HttpResponse::newHttpResponse();
    resp->setBody(std::string(req->body()));
    callback(resp);
  });
}

TEST(HttpHardeningTest, ATransferEncodingOtherThanOneChunkedIs400AndClose) {
  std::atomic<int> calls{0};
  WebTestServer server([&calls](HttpAppFramework& app) { addCountingEcho(app, calls); });
  const std::string smuggled = "GET /echo HTTP/1.1\r\nHost: x\r\n\r\n";
  for (const std::string& fields :
       {std::string("Transfer-Encoding: identity\r\n"),
        std::string("Transfer-Encoding: xchunked\r\n"),
        std::string("Transfer-Encoding: chunked, identity\r\n"),
        std::string("Transfer-Encoding: gzip, chunked\r\n"),
        std::string("Transfer-Encoding: chunked\r\nTransfer-Encoding: chunked\r\n"),
        std::string("Transfer-Encoding: chunked\r\nContent-Length: 5\r\n"),
        std::string("Content-Length: 5\r\nTransfer-Encoding: chunked\r\n")}) {
    HttpClient client("127.0.0.1", server.port());
    // The body is a whole request of its own: read as "no body", it would be answered too.
    client.sendRaw("POST /echo HTTP/1.1\r\nHost: x\r\n" + fields + "\r\n" + smuggled);
    HttpReply reply = client.readReply();
    EXPECT_EQ(reply.status, 400) << fields;
    EXPECT_EQ(reply.header("Connection"), "close") << fields;
    EXPECT_TRUE(client.waitForClose(std::chrono::milliseconds(5000))) << fields;
  }
  EXPECT_EQ(calls, 0);
  HttpClient fine("127.0.0.1", server.port());
  fine.sendRaw(
      "POST /echo HTTP/1.1\r\nHost: x\r\nTransfer-Encoding:  Chunked \r\n\r\n"
      "5\r\nhello\r\n0\r\n\r\n");
  EXPECT_EQ(fine.readReply().body, "hello");
}

TEST(HttpHardeningTest, BodiesOnDiskShareABudgetAnsweredWith413OnceSpent) {
  std::atomic<int> calls{0};
  WebTestServer server([&calls](HttpAppFramework& app) {
    app.config().clientMaxMemoryBodySize = 1024;
    app.config().clientMaxDiskBodySize = 8000;
    app.config().clientMaxDiskBodyTotal = 12000;
    addCountingEcho(app, calls);
  });
  const std::string header = "POST /echo HTTP/1.1\r\nHost: x\r\nContent-Length: 8000\r\n\r\n";
  // One client trickles a body and parks 6000 bytes on disk.
  auto parked = std::make_unique<HttpClient>("127.0.0.1", server.port());
  parked->sendRaw(header + std::string(6000, 'a'));
  ASSERT_TRUE(eventually([&] { return server.app().temporaryBodyBytes() == 6000; }));
  // A second one would pass the budget of all bodies.
  HttpClient second("127.0.0.1", server.port());
  second.sendRaw(header + std::string(7000, 'b'));
  EXPECT_EQ(second.readReply().status, 413);
  EXPECT_TRUE(second.waitForClose(std::chrono::milliseconds(5000)));
  // A body above the budget of one body is refused before it is read.
  HttpClient third("127.0.0.1", server.port());
  third.sendRaw("POST /echo HTTP/1.1\r\nHost: x\r\nContent-Length: 9000\r\n\r\n");
  EXPECT_EQ(third.readReply().status, 413);
  // The parked file goes with its connection, and its bytes with it.
  parked.reset();
  EXPECT_TRUE(eventually([&] { return server.app().temporaryBodyBytes() == 0; }));
  HttpClient fourth("127.0.0.1", server.port());
  EXPECT_EQ(fourth.request("POST", "/echo", std::string(8000, 'd')).body.size(), 8000u);
  EXPECT_TRUE(eventually([&] { return server.app().temporaryBodyBytes() == 0; }));
  EXPECT_EQ(calls, 1);
}

TEST(HttpHardeningTest, ChunkedBodiesCountAgainstTheDiskBudgetToo) {
  std::atomic<int> calls{0};
  WebTestServer server([&calls](HttpAppFramework& app) {
    app.config().clientMaxMemoryBodySize = 1024;
    app.config().clientMaxDiskBodySize = 4000;
    addCountingEcho(app, calls);
  });
  HttpClient client("127.0.0.1", server.port());
  client.sendRaw("POST /echo HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: chunked\r\n\r\n" +
                 std::string("bb8\r\n") + std::string(3000, 'c') + "\r\n" + std::string("bb8\r\n") +
                 std::string(3000, 'c') + "\r\n0\r\n\r\n");
  EXPECT_EQ(client.readReply().status, 413);
  EXPECT_EQ(calls, 0);
  EXPECT_TRUE(eventually([&] { return server.app().temporaryBodyBytes() == 0; }));
}

TEST(HttpHardeningTest, StaticFilesCarryTheBrowserPolicyHeadersAndRoutesDoNot) {
  char pattern[] = "/tmp/kelo-hardening-XXXXXX";
  ASSERT_NE(::mkdtemp(pattern), nullptr);
  const fs::path root = pattern;
  std::ofstream(root / "index.html") << "<html></html>";
  std::atomic<int> calls{0};
  WebTestServer server([&](HttpAppFramework& app) {
    app.config().documentRoot = root.string();
    addCountingEcho(app, calls);
  });
  HttpClient client("127.0.0.1", server.port());
  HttpReply file = client.get("/index.html");
  EXPECT_EQ(file.body, "<html></html>");
  EXPECT_EQ(file.header("X-Content-Type-Options"), "nosniff");
  EXPECT_EQ(file.header("Content-Security-Policy"), "frame-ancestors 'self'");
  EXPECT_EQ(file.header("Referrer-Policy"), "same-origin");
  HttpReply route = client.request("POST", "/echo", "x");
  EXPECT_FALSE(route.hasHeader("X-Content-Type-Options"));
  EXPECT_FALSE(route.hasHeader("Content-Security-Policy"));
  fs::remove_all(root);
}

TEST(HttpHardeningTest, OneAddressGetsAtMost64ConnectionsByDefault) {
  WebTestServer server(nullptr);
  std::vector<std::unique_ptr<RawConnection>> connections;
  for (int i = 0; i < 70; ++i) {
    connections.push_back(std::make_unique<RawConnection>(server.port()));
  }
  EXPECT_TRUE(eventually([&] { return server.app().connectionCount() == 64; }));
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  EXPECT_EQ(server.app().connectionCount(), 64u);
}

TEST(HttpHardeningTest, TheConnectionLimitLeavesRoomBelowTheDescriptorLimit) {
  EXPECT_EQ(ConnectionLimiter::descriptorRoom(256), 192u);
  EXPECT_EQ(ConnectionLimiter::descriptorRoom(1024), 768u);
  EXPECT_EQ(ConnectionLimiter::descriptorRoom(40), 8u);
  rlimit limit{};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
  if (limit.rlim_cur != RLIM_INFINITY) {
    EXPECT_EQ(ConnectionLimiter::effectiveMaximum(0),
              ConnectionLimiter::descriptorRoom(limit.rlim_cur));
    EXPECT_LT(ConnectionLimiter::effectiveMaximum(100000000), limit.rlim_cur);
  }
  EXPECT_EQ(ConnectionLimiter::effectiveMaximum(7), 7u);
}

}  // namespace
