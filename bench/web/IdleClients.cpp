// Opens N keep-alive connections to a server, makes one request on each, and holds them open
// until killed, so that the server's memory with many idle connections can be measured.
// Usage: bench-web-idle-clients HOST PORT N PATH
#include <boost/asio/connect.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/read_until.hpp>
#include <boost/asio/streambuf.hpp>
#include <boost/asio/write.hpp>
#include <cstdlib>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

namespace asio = boost::asio;
using tcp = asio::ip::tcp;

int main(int argc, char** argv) {
  if (argc != 5) {
    std::cerr << "usage: bench-web-idle-clients HOST PORT N PATH\n";
    return 2;
  }
  std::string host = argv[1];
  std::string port = argv[2];
  int count = std::atoi(argv[3]);
  std::string path = argv[4];
  asio::io_context context;
  tcp::resolver resolver(context);
  auto endpoints = resolver.resolve(host, port);
  std::vector<tcp::socket> sockets;
  std::string request = "GET " + path + " HTTP/1.1\r\nHost: " + host + "\r\n\r\n";
  for (int i = 0; i < count; ++i) {
    tcp::socket socket(context);
    asio::connect(socket, endpoints);
    asio::write(socket, asio::buffer(request));
    asio::streambuf response;
    asio::read_until(socket, response, "\r\n\r\n");
    sockets.push_back(std::move(socket));
  }
  std::cout << "open " << sockets.size() << std::endl;
  for (;;) std::this_thread::sleep_for(std::chrono::hours(1));
}
