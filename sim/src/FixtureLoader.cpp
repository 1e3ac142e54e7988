#include "sim/FixtureLoader.h"

#include <json/reader.h>

#include <algorithm>
#include <fstream>
#include <memory>
#include <sstream>

#include "sim/AccessRights.h"
#include "sim/ResourceJson.h"
#include "sim/models/ModelRegistry.h"

namespace halvor::sim {

namespace {

[[noreturn]] void fail(const std::string& source, const std::string& reason) {
  throw FixtureError(source + ": " + reason);
}

std::string requiredText(const Json::Value& object, const char* key, const std::string& where,
                         const std::string& source) {
  const Json::Value& value = object[key];
  if (!value.isString()) fail(source, where + ": \"" + key + "\" must be a text");
  return value.asString();
}

std::vector<std::string> textList(const Json::Value& array, const std::string& where,
                                  const std::string& source) {
  std::vector<std::string> texts;
  if (array.isNull()) return texts;
  if (!array.isArray()) fail(source, where + " must be an array of texts");
  for (const Json::Value& element : array) {
    if (!element.isString()) fail(source, where + " must be an array of texts");
    texts.push_back(element.asString());
  }
  return texts;
}

FixtureUser userFromJson(const Json::Value& json, const std::string& where,
                         const std::string& source) {
  if (!json.isObject()) fail(source, where + " must be an object");
  FixtureUser user;
  user.name = requiredText(json, "name", where, source);
  user.password = requiredText(json, "password", where, source);
  user.role = requiredText(json, "role", where, source);
  if (!AccessRights::parseRole(user.role)) {
    fail(source,
         where + ": unknown role \"" + user.role + "\" (administrator, operator or read-only)");
  }
  user.autoLoginHosts = textList(json["autoLoginHosts"], where + ".autoLoginHosts", source);
  return user;
}

void readUsers(const Json::Value& users, Fixture& fixture) {
  if (users.isNull()) return;
  if (!users.isArray()) fail(fixture.source, "\"users\" must be an array");
  for (Json::ArrayIndex i = 0; i < users.size(); ++i) {
    fixture.users.push_back(
        userFromJson(users[i], "users[" + std::to_string(i) + "]", fixture.source));
  }
}

void readResources(const Json::Value& resources, Fixture& fixture) {
  if (resources.isNull()) return;
  if (!resources.isObject()) fail(fixture.source, "\"resources\" must be an object");
  for (const std::string& path : resources.getMemberNames()) {
    if (path.empty() || path.front() != '/') {
      fail(fixture.source, "resource path \"" + path + "\" must start with /");
    }
    try {
      fixture.resources.emplace_back(path, ResourceJson::resourceFromJson(resources[path], path));
    } catch (const std::invalid_argument& error) {
      fail(fixture.source, error.what());
    }
  }
}

void readAutoLogin(const Json::Value& rules, Fixture& fixture) {
  if (rules.isNull()) return;
  if (!rules.isArray()) fail(fixture.source, "\"autoLogin\" must be an array");
  for (Json::ArrayIndex i = 0; i < rules.size(); ++i) {
    std::string where = "autoLogin[" + std::to_string(i) + "]";
    if (!rules[i].isObject()) fail(fixture.source, where + " must be an object");
    fixture.autoLogin.push_back({requiredText(rules[i], "host", where, fixture.source),
                                 requiredText(rules[i], "user", where, fixture.source)});
  }
}

void readSessionTimeout(const Json::Value& timeout, Fixture& fixture) {
  if (timeout.isNull()) return;
  if (!timeout.isInt() || timeout.asInt() <= 0) {
    fail(fixture.source, "\"sessionTimeoutSeconds\" must be a positive whole number");
  }
  fixture.sessionTimeoutSeconds = timeout.asInt();
}

// The parser's report spans several lines; the error text must stay one line.
std::string oneLine(const std::string& text) {
  std::string line;
  bool blank = true;
  for (char c : text) {
    bool space = c == '\n' || c == ' ' || c == '\t' || c == '*';
    if (space) {
      if (!blank) line.push_back(' ');
      blank = true;
    } else {
      line.push_back(c);
      blank = false;
    }
  }
  while (!line.empty() && line.back() == ' ') line.pop_back();
  return line;
}

bool isOwnKey(const std::string& key) {
  return key == "users" || key == "resources" || key == "autoLogin" ||
         key == "sessionTimeoutSeconds" || key == "models" || key == "comment";
}

// Keeps the models' sections as they are; any other key is refused.
void readSections(const Json::Value& root, const std::vector<std::string>& modelSections,
                  Fixture& fixture) {
  for (const std::string& key : root.getMemberNames()) {
    if (isOwnKey(key)) continue;
    if (std::find(modelSections.begin(), modelSections.end(), key) == modelSections.end()) {
      fail(fixture.source, "unknown key \"" + key + "\"");
    }
    fixture.sections.emplace_back(key, root[key]);
  }
}

}  // namespace

Fixture FixtureLoader::loadFile(const std::string& path) {
  return loadFile(path, ModelRegistry::fixtureSections());
}

Fixture FixtureLoader::loadFile(const std::string& path,
                                const std::vector<std::string>& modelSections) {
  std::ifstream file(path);
  if (!file) fail(path, "cannot be read");
  std::ostringstream text;
  text << file.rdbuf();
  return parse(text.str(), path, modelSections);
}

Fixture FixtureLoader::parse(const std::string& text, const std::string& source) {
  return parse(text, source, ModelRegistry::fixtureSections());
}

Fixture FixtureLoader::parse(const std::string& text, const std::string& source,
                             const std::vector<std::string>& modelSections) {
  Json::CharReaderBuilder builder;
  builder["collectComments"] = false;
  builder["allowComments"] = true;
  std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  Json::Value root;
  std::string errors;
  if (!reader->parse(text.data(), text.data() + text.size(), &root, &errors)) {
    fail(source, "not valid JSON: " + oneLine(errors));
  }
  if (!root.isObject()) fail(source, "a fixture is a JSON object");
  Fixture fixture;
  fixture.source = source;
  readSections(root, modelSections, fixture);
  readUsers(root["users"], fixture);
  readResources(root["resources"], fixture);
  readAutoLogin(root["autoLogin"], fixture);
  readSessionTimeout(root["sessionTimeoutSeconds"], fixture);
  fixture.models = textList(root["models"], "\"models\"", fixture.source);
  return fixture;
}

}  // namespace halvor::sim
