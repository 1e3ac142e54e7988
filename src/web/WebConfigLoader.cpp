#include <json/reader.h>

#include <cctype>
#include <fstream>
#include <limits>
#include <sstream>
#include <stdexcept>

#include "kelo/web/WebConfig.h"

namespace halvor::kelo::web {
namespace {

[[noreturn]] void badValue(const std::string& key, const std::string& expected) {
  throw std::runtime_error("Web configuration: \"" + key + "\" must be " + expected);
}

std::string readString(const Json::Value& object, const std::string& key, std::string fallback) {
  if (!object.isMember(key)) return fallback;
  if (!object[key].isString()) badValue(key, "a string");
  return object[key].asString();
}

std::uint64_t readCount(const Json::Value& object, const std::string& key, std::uint64_t fallback) {
  if (!object.isMember(key)) return fallback;
  const Json::Value& value = object[key];
  if (!value.isIntegral() || !value.isUInt64()) badValue(key, "a non-negative integer");
  return value.asUInt64();
}

bool readBool(const Json::Value& object, const std::string& key, bool fallback) {
  if (!object.isMember(key)) return fallback;
  if (!object[key].isBool()) badValue(key, "true or false");
  return object[key].asBool();
}

std::uint64_t readSize(const Json::Value& object, const std::string& key, std::uint64_t fallback) {
  if (!object.isMember(key)) return fallback;
  const Json::Value& value = object[key];
  if (value.isIntegral() && value.isUInt64()) return value.asUInt64();
  if (!value.isString()) badValue(key, "a size such as \"64K\", \"1M\" or a number of bytes");
  try {
    return WebConfigLoader::parseSize(value.asString());
  } catch (const std::invalid_argument&) {
    badValue(key, "a size such as \"64K\", \"1M\" or a number of bytes, not \"" + value.asString() +
                      "\"");
  }
}

std::string readSameSite(const Json::Value& app, const std::string& fallback) {
  std::string value = readString(app, "cookie_same_site", fallback);
  if (value != "Lax" && value != "Strict" && value != "None" && !value.empty()) {
    badValue("cookie_same_site", "\"Lax\", \"Strict\", \"None\" or \"\"");
  }
  return value;
}

void readApp(const Json::Value& app, WebConfig& config) {
  if (!app.isObject()) badValue("app", "an object");
  config.numberOfThreads = readCount(app, "number_of_threads", config.numberOfThreads);
  config.documentRoot = readString(app, "document_root", config.documentRoot);
  config.uploadPath = readString(app, "upload_path", config.uploadPath);
  config.clientMaxBodySize = readSize(app, "client_max_body_size", config.clientMaxBodySize);
  config.clientMaxMemoryBodySize =
      readSize(app, "client_max_memory_body_size", config.clientMaxMemoryBodySize);
  // The disk budget of one body follows the memory limit unless it is given.
  config.clientMaxDiskBodySize =
      readSize(app, "client_max_disk_body_size", 16 * config.clientMaxMemoryBodySize);
  config.clientMaxDiskBodyTotal =
      readSize(app, "client_max_disk_body_total", config.clientMaxDiskBodyTotal);
  config.clientMaxWebSocketMessageSize =
      readSize(app, "client_max_websocket_message_size", config.clientMaxWebSocketMessageSize);
  config.clientMaxWebSocketSendQueue =
      readSize(app, "client_max_websocket_send_queue", config.clientMaxWebSocketSendQueue);
  config.idleConnectionTimeout =
      readCount(app, "idle_connection_timeout", config.idleConnectionTimeout);
  config.maxConnections = readCount(app, "max_connections", config.maxConnections);
  config.maxConnectionsPerIp = readCount(app, "max_connections_per_ip", config.maxConnectionsPerIp);
  config.serverHeader = readBool(app, "server_header_field", config.serverHeader);
  config.cookieSameSite = readSameSite(app, config.cookieSameSite);
  config.strictTransportSecurity =
      readString(app, "strict_transport_security", config.strictTransportSecurity);
  config.contentTypeOptions = readString(app, "content_type_options", config.contentTypeOptions);
  config.contentSecurityPolicy =
      readString(app, "content_security_policy", config.contentSecurityPolicy);
  config.referrerPolicy = readString(app, "referrer_policy", config.referrerPolicy);
  if (app.isMember("file_types")) {
    const Json::Value& types = app["file_types"];
    if (!types.isArray()) badValue("file_types", "an array of strings");
    config.fileTypes.clear();
    for (const Json::Value& type : types) {
      if (!type.isString()) badValue("file_types", "an array of strings");
      std::string extension = type.asString();
      for (char& c : extension) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
      config.fileTypes.push_back(extension);
    }
  }
}

ListenerConfig readListener(const Json::Value& entry) {
  if (!entry.isObject()) badValue("listeners", "an array of objects");
  ListenerConfig listener;
  listener.address = readString(entry, "address", listener.address);
  std::uint64_t port = readCount(entry, "port", 0);
  if (port > std::numeric_limits<std::uint16_t>::max()) badValue("port", "at most 65535");
  listener.port = static_cast<std::uint16_t>(port);
  listener.https = readBool(entry, "https", false);
  listener.certFile = WebConfigLoader::stripFileScheme(readString(entry, "cert", ""));
  listener.keyFile = WebConfigLoader::stripFileScheme(readString(entry, "key", ""));
  listener.useOldTls = readBool(entry, "use_old_tls", false);
  if (entry.isMember("ssl_conf")) {
    const Json::Value& commands = entry["ssl_conf"];
    if (!commands.isArray()) badValue("ssl_conf", "an array of [name, value] pairs");
    for (const Json::Value& command : commands) {
      if (!command.isArray() || command.size() != 2 || !command[0].isString() ||
          !command[1].isString()) {
        badValue("ssl_conf", "an array of [name, value] pairs");
      }
      listener.sslConfCmds.emplace_back(command[0].asString(), command[1].asString());
    }
  }
  return listener;
}

PluginConfig readPlugin(const Json::Value& entry) {
  if (!entry.isObject()) badValue("plugins", "an array of objects");
  if (!entry.isMember("name") || !entry["name"].isString()) badValue("name", "a string");
  PluginConfig plugin;
  plugin.name = entry["name"].asString();
  if (entry.isMember("config")) {
    if (!entry["config"].isObject()) badValue("config", "an object");
    plugin.config = entry["config"];
  }
  return plugin;
}

}  // namespace

WebConfig WebConfigLoader::loadFile(const std::string& path) {
  std::ifstream file(path);
  if (!file) throw std::runtime_error("Web configuration: cannot open \"" + path + "\"");
  Json::CharReaderBuilder builder;
  builder["allowComments"] = true;
  builder["collectComments"] = false;
  builder["failIfExtra"] = true;
  builder["rejectDupKeys"] = false;
  Json::Value root;
  std::string errors;
  if (!Json::parseFromStream(builder, file, &root, &errors)) {
    throw std::runtime_error("Web configuration: \"" + path + "\" is not valid JSON: " + errors);
  }
  try {
    return fromJson(root);
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(std::string(error.what()) + " (in \"" + path + "\")");
  }
}

WebConfig WebConfigLoader::fromJson(const Json::Value& root) {
  if (!root.isObject()) throw std::runtime_error("Web configuration: the root must be an object");
  WebConfig config;
  if (root.isMember("app")) readApp(root["app"], config);
  if (root.isMember("listeners")) {
    if (!root["listeners"].isArray()) badValue("listeners", "an array");
    for (const Json::Value& entry : root["listeners"])
      config.listeners.push_back(readListener(entry));
  }
  if (root.isMember("plugins")) {
    if (!root["plugins"].isArray()) badValue("plugins", "an array");
    for (const Json::Value& entry : root["plugins"]) config.plugins.push_back(readPlugin(entry));
  }
  return config;
}

std::uint64_t WebConfigLoader::parseSize(const std::string& text) {
  std::size_t digits = 0;
  while (digits < text.size() && std::isdigit(static_cast<unsigned char>(text[digits]))) ++digits;
  if (digits == 0 || digits > 18) throw std::invalid_argument("bad size: " + text);
  std::uint64_t value = std::stoull(text.substr(0, digits));
  std::string suffix = text.substr(digits);
  std::uint64_t unit = 1;
  if (suffix == "K" || suffix == "k") {
    unit = 1024;
  } else if (suffix == "M" || suffix == "m") {
    unit = 1024 * 1024;
  } else if (suffix == "G" || suffix == "g") {
    unit = 1024ull * 1024 * 1024;
  } else if (!suffix.empty()) {
    throw std::invalid_argument("bad size: " + text);
  }
  if (value > std::numeric_limits<std::uint64_t>::max() / unit) {
    throw std::invalid_argument("size too large: " + text);
  }
  return value * unit;
}

std::string WebConfigLoader::stripFileScheme(const std::string& path) {
  static const std::string kScheme = "file://";
  std::string result = path;
  for (std::size_t at = result.find(kScheme); at != std::string::npos; at = result.find(kScheme)) {
    result.erase(at, kScheme.size());
  }
  return result;
}

}  // namespace halvor::kelo::web
