#include "sim/models/FixtureValues.h"

#include <stdexcept>

namespace halvor::sim {

namespace {

[[noreturn]] void refuse(const std::string& model, const std::string& key,
                         const std::string& expected) {
  throw std::invalid_argument(model + "." + key + ": " + expected);
}

}  // namespace

void FixtureValues::requireObject(const Json::Value& section, const std::string& model) {
  if (!section.isObject()) throw std::invalid_argument(model + ": the section must be an object");
}

int FixtureValues::wholeNumber(const Json::Value& section, const std::string& model,
                               const std::string& key) {
  const Json::Value& value = section[key];
  if (!value.isInt()) refuse(model, key, "a whole number");
  return value.asInt();
}

int FixtureValues::count(const Json::Value& section, const std::string& model,
                         const std::string& key) {
  const Json::Value& value = section[key];
  if (!value.isInt() || value.asInt() < 0) refuse(model, key, "a whole number, 0 or more");
  return value.asInt();
}

std::chrono::milliseconds FixtureValues::delay(const Json::Value& section, const std::string& model,
                                               const std::string& key) {
  return std::chrono::milliseconds(count(section, model, key));
}

std::chrono::milliseconds FixtureValues::duration(const Json::Value& section,
                                                  const std::string& model,
                                                  const std::string& key) {
  const Json::Value& value = section[key];
  if (!value.isInt() || value.asInt() <= 0) refuse(model, key, "a positive whole number");
  return std::chrono::milliseconds(value.asInt());
}

bool FixtureValues::flag(const Json::Value& section, const std::string& model,
                         const std::string& key) {
  const Json::Value& value = section[key];
  if (!value.isBool()) refuse(model, key, "true or false");
  return value.asBool();
}

}  // namespace halvor::sim
