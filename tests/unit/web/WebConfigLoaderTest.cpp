#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>

#include "kelo/web/WebConfig.h"

using namespace halvor::kelo::web;

namespace {

class WebConfigLoaderTest : public ::testing::Test {
 protected:
  void TearDown() override {
    if (!path.empty()) std::remove(path.c_str());
  }
  const std::string& file(const std::string& text) {
    char pattern[] = "/tmp/kelo-webconfig-XXXXXX";
    int fd = ::mkstemp(pattern);
    ::close(fd);
    path = pattern;
    std::ofstream(path) << text;
    return path;
  }
  std::string path;
};

TEST_F(WebConfigLoaderTest, DefaultsWhereKeysAreAbsent) {
  WebConfig config = WebConfigLoader::loadFile(file("{}"));
  EXPECT_EQ(config.numberOfThreads, 1u);
  EXPECT_EQ(config.documentRoot, "./");
  EXPECT_EQ(config.uploadPath, "uploads");
  EXPECT_EQ(config.clientMaxBodySize, 1024u * 1024u);
  EXPECT_EQ(config.clientMaxMemoryBodySize, 64u * 1024u);
  EXPECT_EQ(config.clientMaxWebSocketMessageSize, 128u * 1024u);
  EXPECT_EQ(config.clientMaxWebSocketSendQueue, 8u * 1024u * 1024u);
  EXPECT_EQ(config.idleConnectionTimeout, 60u);
  EXPECT_EQ(config.clientMaxDiskBodySize, 16u * 64u * 1024u);
  EXPECT_EQ(config.clientMaxDiskBodyTotal, 64u * 1024u * 1024u);
  EXPECT_EQ(config.maxConnections, 0u);
  EXPECT_EQ(config.maxConnectionsPerIp, 64u);
  EXPECT_EQ(config.cookieSameSite, "Lax");
  EXPECT_EQ(config.strictTransportSecurity, "max-age=31536000");
  EXPECT_EQ(config.contentTypeOptions, "nosniff");
  EXPECT_EQ(config.contentSecurityPolicy, "frame-ancestors 'self'");
  EXPECT_EQ(config.referrerPolicy, "same-origin");
  EXPECT_EQ(config.maxHeaderSize, 16u * 1024u);
  EXPECT_TRUE(config.listeners.empty());
  EXPECT_TRUE(config.plugins.empty());
  EXPECT_NE(std::find(config.fileTypes.begin(), config.fileTypes.end(), "woff2"),
            config.fileTypes.end());
}

TEST_F(WebConfigLoaderTest, ReadsEveryKeyAndAllowsComments) {
  WebConfig config = WebConfigLoader::loadFile(file(R"({
    // threads and paths
    "app": {
      "number_of_threads": 3,
      "document_root": "/srv/www", /* the front end */
      "upload_path": "up",
      "client_max_body_size": "20M",
      "client_max_memory_body_size": "128k",
      "client_max_websocket_message_size": 4096,
      "client_max_websocket_send_queue": "1G",
      "idle_connection_timeout": 5,
      "max_connections": 10,
      "max_connections_per_ip": 2,
      "file_types": ["HTML", "css"]
    },
    "listeners": [
      {"address": "127.0.0.1", "port": 9000, "https": true,
       "cert": "file:///etc/c.crt", "key": "k.key", "ssl_conf": [["MinProtocol", "TLSv1.3"]]}
    ],
    "plugins": [{"name": "Queue", "config": {"threads_num": 2, "name": "bg"}}, {"name": "Bare"}]
  })"));
  EXPECT_EQ(config.numberOfThreads, 3u);
  EXPECT_EQ(config.documentRoot, "/srv/www");
  EXPECT_EQ(config.uploadPath, "up");
  EXPECT_EQ(config.clientMaxBodySize, 20u * 1024u * 1024u);
  EXPECT_EQ(config.clientMaxMemoryBodySize, 128u * 1024u);
  EXPECT_EQ(config.clientMaxWebSocketMessageSize, 4096u);
  EXPECT_EQ(config.clientMaxWebSocketSendQueue, 1024ull * 1024u * 1024u);
  EXPECT_EQ(config.idleConnectionTimeout, 5u);
  EXPECT_EQ(config.maxConnections, 10u);
  EXPECT_EQ(config.maxConnectionsPerIp, 2u);
  EXPECT_EQ(config.fileTypes, (std::vector<std::string>{"html", "css"}));
  ASSERT_EQ(config.listeners.size(), 1u);
  EXPECT_EQ(config.listeners[0].address, "127.0.0.1");
  EXPECT_EQ(config.listeners[0].port, 9000);
  EXPECT_TRUE(config.listeners[0].https);
  EXPECT_EQ(config.listeners[0].certFile, "/etc/c.crt");
  EXPECT_EQ(config.listeners[0].keyFile, "k.key");
  ASSERT_EQ(config.listeners[0].sslConfCmds.size(), 1u);
  ASSERT_EQ(config.plugins.size(), 2u);
  EXPECT_EQ(config.plugins[0].name, "Queue");
  EXPECT_EQ(config.plugins[0].config["threads_num"].asInt(), 2);
  EXPECT_TRUE(config.plugins[1].config.isNull());
}

TEST_F(WebConfigLoaderTest, HardeningKeysAreRead) {
  WebConfig config = WebConfigLoader::loadFile(file(R"({"app": {
      "client_max_disk_body_size": "4M", "client_max_disk_body_total": "32M",
      "cookie_same_site": "Strict", "strict_transport_security": "",
      "content_type_options": "", "content_security_policy": "frame-ancestors 'none'",
      "referrer_policy": "no-referrer"}})"));
  EXPECT_EQ(config.clientMaxDiskBodySize, 4u * 1024u * 1024u);
  EXPECT_EQ(config.clientMaxDiskBodyTotal, 32u * 1024u * 1024u);
  EXPECT_EQ(config.cookieSameSite, "Strict");
  EXPECT_EQ(config.strictTransportSecurity, "");
  EXPECT_EQ(config.contentTypeOptions, "");
  EXPECT_EQ(config.contentSecurityPolicy, "frame-ancestors 'none'");
  EXPECT_EQ(config.referrerPolicy, "no-referrer");
}

TEST_F(WebConfigLoaderTest, TheDiskBudgetOfOneBodyFollowsTheMemoryLimitUnlessGiven) {
  WebConfig config =
      WebConfigLoader::loadFile(file(R"({"app": {"client_max_memory_body_size": "128K"}})"));
  EXPECT_EQ(config.clientMaxDiskBodySize, 16u * 128u * 1024u);
}

TEST_F(WebConfigLoaderTest, AnUnknownSameSiteValueIsRefused) {
  EXPECT_THROW(WebConfigLoader::loadFile(file(R"({"app": {"cookie_same_site": "lax"}})")),
               std::runtime_error);
}

TEST_F(WebConfigLoaderTest, MissingFileIsAClearError) {
  try {
    WebConfigLoader::loadFile("/nonexistent/drogon-config.json");
    FAIL() << "no exception";
  } catch (const std::runtime_error& error) {
    EXPECT_NE(std::string(error.what()).find("/nonexistent/drogon-config.json"), std::string::npos);
  }
}

TEST_F(WebConfigLoaderTest, BadJsonIsAnError) {
  EXPECT_THROW(WebConfigLoader::loadFile(file("{\"app\": {")), std::runtime_error);
  EXPECT_THROW(WebConfigLoader::loadFile(file("[1, 2]")), std::runtime_error);
}

TEST_F(WebConfigLoaderTest, WrongTypesAreErrorsNamingTheKey) {
  try {
    WebConfigLoader::loadFile(file(R"({"app": {"number_of_threads": "two"}})"));
    FAIL() << "no exception";
  } catch (const std::runtime_error& error) {
    EXPECT_NE(std::string(error.what()).find("number_of_threads"), std::string::npos);
  }
  EXPECT_THROW(WebConfigLoader::loadFile(file(R"({"app": {"document_root": 5}})")),
               std::runtime_error);
  EXPECT_THROW(WebConfigLoader::loadFile(file(R"({"app": {"max_connections": -1}})")),
               std::runtime_error);
  EXPECT_THROW(WebConfigLoader::loadFile(file(R"({"listeners": {}})")), std::runtime_error);
  EXPECT_THROW(WebConfigLoader::loadFile(file(R"({"listeners": [{"port": 70000}]})")),
               std::runtime_error);
  EXPECT_THROW(WebConfigLoader::loadFile(file(R"({"plugins": [{"config": {}}]})")),
               std::runtime_error);
}

TEST_F(WebConfigLoaderTest, BadSizeSuffixIsAnError) {
  try {
    WebConfigLoader::loadFile(file(R"({"app": {"client_max_body_size": "10X"}})"));
    FAIL() << "no exception";
  } catch (const std::runtime_error& error) {
    EXPECT_NE(std::string(error.what()).find("client_max_body_size"), std::string::npos);
  }
}

TEST(WebConfigSizeTest, ParsesSuffixes) {
  EXPECT_EQ(WebConfigLoader::parseSize("0"), 0u);
  EXPECT_EQ(WebConfigLoader::parseSize("512"), 512u);
  EXPECT_EQ(WebConfigLoader::parseSize("64K"), 65536u);
  EXPECT_EQ(WebConfigLoader::parseSize("1M"), 1048576u);
  EXPECT_EQ(WebConfigLoader::parseSize("2G"), 2147483648u);
  EXPECT_THROW(WebConfigLoader::parseSize(""), std::invalid_argument);
  EXPECT_THROW(WebConfigLoader::parseSize("K"), std::invalid_argument);
  EXPECT_THROW(WebConfigLoader::parseSize("1KB"), std::invalid_argument);
  EXPECT_THROW(WebConfigLoader::parseSize("-1"), std::invalid_argument);
  EXPECT_THROW(WebConfigLoader::parseSize("1.5M"), std::invalid_argument);
}

TEST(WebConfigSizeTest, StripsFileScheme) {
  EXPECT_EQ(WebConfigLoader::stripFileScheme("file://certificates/server.crt"),
            "certificates/server.crt");
  EXPECT_EQ(WebConfigLoader::stripFileScheme("/plain/path.key"), "/plain/path.key");
}

}  // namespace
