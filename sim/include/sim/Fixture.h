#pragma once

#include <json/value.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tavelabi/Resource.h"

namespace halvor::sim {

struct FixtureUser {
  std::string name;
  std::string password;
  std::string role;
  std::vector<std::string> autoLoginHosts;
};

struct AutoLoginRule {
  std::string host;
  std::string username;
};

// What one fixture file seeds: users, resources, auto-login rules, the session timeout and the
// settings of models.
struct Fixture {
  std::string source;  // the file it came from
  std::vector<FixtureUser> users;
  std::vector<std::pair<std::string, tavelabi::Resource>> resources;
  std::vector<AutoLoginRule> autoLogin;
  std::optional<int> sessionTimeoutSeconds;
  // Models (by name) that run also when the demo's models are off, so that a test can have one
  // domain's model and nothing else.
  std::vector<std::string> models;
  // Sections that models read (Model::fixtureSection), as written, in key order.
  std::vector<std::pair<std::string, Json::Value>> sections;
};

}  // namespace halvor::sim
