#pragma once

#include <json/value.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace halvor::kelo::web {

struct ListenerConfig {
  std::string address = "0.0.0.0";
  std::uint16_t port = 0;
  bool https = false;
  std::string certFile;  // "file://" already removed
  std::string keyFile;   // "file://" already removed
  bool useOldTls = false;
  std::vector<std::pair<std::string, std::string>> sslConfCmds;
};

struct PluginConfig {
  std::string name;
  Json::Value config;
};

// The web configuration file: "app", "listeners", "plugins". Every absent key keeps the default
// shown here.
struct WebConfig {
  // I/O threads; 0 means one per core.
  std::size_t numberOfThreads = 1;
  std::string documentRoot = "./";
  std::string uploadPath = "uploads";
  // Extensions (without dot, lower case) that static files may have. .json, .key, .crt, .pem
  // and .log are never served, whatever this list says.
  std::vector<std::string> fileTypes = {
      "html", "js",  "css",  "xml", "xsl", "txt", "svg",  "ttf",  "otf",  "woff", "woff2", "eot",
      "png",  "jpg", "jpeg", "gif", "bmp", "ico", "icns", "webp", "wasm", "map",  "pdf"};
  std::uint64_t clientMaxBodySize = 1024 * 1024;      // "1M"
  std::uint64_t clientMaxMemoryBodySize = 64 * 1024;  // "64K"
  // One request body kept in a temporary file may hold this much; more is answered with 413
  // and the connection closes. Absent from the file: 16 times clientMaxMemoryBodySize.
  std::uint64_t clientMaxDiskBodySize = 16 * 64 * 1024;  // "1M"
  // All temporary body files of the process together; a body that would pass it is answered
  // with 413 and the connection closes.
  std::uint64_t clientMaxDiskBodyTotal = 64 * 1024 * 1024;      // "64M"
  std::uint64_t clientMaxWebSocketMessageSize = 128 * 1024;     // "128K"
  std::uint64_t clientMaxWebSocketSendQueue = 8 * 1024 * 1024;  // "8M"
  // Seconds without traffic after which a connection is closed; 0 disables the timeout.
  std::uint64_t idleConnectionTimeout = 60;
  // 0: as many as the process's descriptor limit leaves room for (read at start). A larger
  // value is lowered to that room as well, since connections beyond it could not be served.
  std::size_t maxConnections = 0;
  // 0: no limit. A console in a browser uses a few dozen at most.
  std::size_t maxConnectionsPerIp = 64;
  // Total size of request line and header fields.
  std::size_t maxHeaderSize = 16 * 1024;
  bool serverHeader = false;
  // Origins of other sites whose pages may open WebSockets here, besides the request's own site
  // ("*": every one). Not read from the file: the plug-in sets it from its own configuration.
  std::vector<std::string> trustedWebSocketOrigins;
  // Attributes of every Set-Cookie: SameSite with this value ("" leaves it out), and Secure on
  // answers over TLS.
  std::string cookieSameSite = "Lax";
  // Sent on every answer over TLS ("" for none).
  std::string strictTransportSecurity = "max-age=31536000";
  // Sent with static files ("" for none): X-Content-Type-Options, Content-Security-Policy
  // (a frame-ancestors policy) and Referrer-Policy.
  std::string contentTypeOptions = "nosniff";
  std::string contentSecurityPolicy = "frame-ancestors 'self'";
  std::string referrerPolicy = "same-origin";
  std::vector<ListenerConfig> listeners;
  std::vector<PluginConfig> plugins;
};

// Reads the configuration file. JSON with // and /* */ comments allowed. Sizes are numbers of
// bytes or texts with a suffix K, M or G (powers of 1024). Throws std::runtime_error naming the
// file and the key on a missing file, bad JSON, a value of the wrong type or a bad size.
class WebConfigLoader {
 public:
  static WebConfig loadFile(const std::string& path);
  static WebConfig fromJson(const Json::Value& root);
  // "64K" -> 65536; throws std::invalid_argument on anything else than digits and one suffix.
  static std::uint64_t parseSize(const std::string& text);
  // Removes every "file://" from a path: "file:///a/b" -> "/a/b".
  static std::string stripFileScheme(const std::string& path);
};

}  // namespace halvor::kelo::web
