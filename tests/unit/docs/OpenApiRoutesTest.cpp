#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "OpenApiOutline.h"
#include "kelo/Registrations.h"
#include "kelo/web/HttpAppFramework.h"

namespace halvor::kelo::test {
namespace {

const std::string kDocument = KELO_OPENAPI_DOCUMENT;

std::string lowerCase(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return lower;
}

// What Registrations::registerRoutes makes known to a fresh application.
struct RegisteredRoutes {
  // Path -> method in lower case -> the route's description, for the failure messages.
  std::map<std::string, std::map<std::string, std::string>> http;
  std::set<std::string> webSockets;
};

RegisteredRoutes registeredRoutes() {
  web::HttpAppFramework application;
  Registrations::registerRoutes(application);
  RegisteredRoutes routes;
  const std::vector<std::string> webSocketPaths = application.getWebSocketPaths();
  routes.webSockets.insert(webSocketPaths.begin(), webSocketPaths.end());
  for (const auto& [path, method, description] : application.getHandlersInfo()) {
    // The route listing names WebSocket endpoints too, as GET routes; they are compared with
    // the document's WebSocket list instead.
    if (routes.webSockets.count(path) != 0) {
      continue;
    }
    if (method == web::Invalid) {
      // A route without method constraints serves whatever reaches it: every method but HEAD,
      // which rides on GET, and OPTIONS, which the cross-origin advice answers before routing.
      for (const char* any : {"get", "post", "put", "delete", "patch"}) {
        routes.http[path][any] = description;
      }
    } else {
      routes.http[path][lowerCase(web::toString(method))] = description;
    }
  }
  return routes;
}

std::string upperCase(const std::string& text) {
  std::string upper = text;
  std::transform(upper.begin(), upper.end(), upper.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return upper;
}

class OpenApiRoutesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_NO_THROW(document = OpenApiOutline::readFile(kDocument));
    routes = registeredRoutes();
  }

  OpenApiOutline document;
  RegisteredRoutes routes;
};

TEST_F(OpenApiRoutesTest, EveryRegisteredRouteIsDocumentedWithEachOfItsMethods) {
  ASSERT_FALSE(routes.http.empty()) << "Registrations::registerRoutes registered no REST route";
  std::string missing;
  for (const auto& [path, methods] : routes.http) {
    const auto documented = document.operations.find(path);
    for (const auto& [method, description] : methods) {
      if (documented == document.operations.end() || documented->second.count(method) == 0) {
        missing += "\n  " + upperCase(method) + " " + path + " (" + description + ")";
      }
    }
  }
  EXPECT_TRUE(missing.empty()) << "Registered but missing from " << kDocument
                               << " (add them under paths:):" << missing;
}

TEST_F(OpenApiRoutesTest, EveryDocumentedOperationIsARegisteredRoute) {
  std::string extra;
  for (const auto& [path, methods] : document.operations) {
    if (methods.empty()) {
      extra += "\n  " + path + " (a path without operations)";
    }
    const auto registered = routes.http.find(path);
    for (const std::string& method : methods) {
      if (registered == routes.http.end() || registered->second.count(method) == 0) {
        extra += "\n  " + upperCase(method) + " " + path;
      }
    }
  }
  EXPECT_TRUE(extra.empty()) << "In " << kDocument
                             << " but not registered by Registrations::registerRoutes:" << extra;
}

TEST_F(OpenApiRoutesTest, EveryWebSocketEndpointIsInTheDocumentsWebSocketList) {
  ASSERT_FALSE(routes.webSockets.empty())
      << "Registrations::registerRoutes registered no WebSocket endpoint";
  std::string missing;
  for (const std::string& path : routes.webSockets) {
    if (document.webSocketPaths.count(path) == 0) {
      missing += "\n  " + path;
    }
  }
  EXPECT_TRUE(missing.empty()) << "WebSocket endpoints missing from x-websockets in " << kDocument
                               << ":" << missing;
}

TEST_F(OpenApiRoutesTest, EveryDocumentedWebSocketEndpointIsRegistered) {
  std::string extra;
  for (const std::string& path : document.webSocketPaths) {
    if (routes.webSockets.count(path) == 0) {
      extra += "\n  " + path;
    }
  }
  EXPECT_TRUE(extra.empty()) << "In x-websockets of " << kDocument
                             << " but not registered as a WebSocket endpoint:" << extra;
}

}  // namespace
}  // namespace halvor::kelo::test
