#pragma once

#include <json/value.h>

#include <chrono>
#include <string>

namespace halvor::sim {

// The checked reading of a model's fixture section: each reader takes the model's short name
// (the prefix of its messages, e.g. "presets") and a key that the section holds, and throws
// std::invalid_argument with "<model>.<key>: ..." when the value is not of the kind asked for.
// A caller asks only for keys the section has (section.isMember), so that an absent key keeps
// the model's default.
class FixtureValues {
 public:
  // Throws "<model>: the section must be an object" unless it is one.
  static void requireObject(const Json::Value& section, const std::string& model);
  // Any whole number.
  static int wholeNumber(const Json::Value& section, const std::string& model,
                         const std::string& key);
  // A whole number, 0 or more.
  static int count(const Json::Value& section, const std::string& model, const std::string& key);
  // A number of milliseconds, 0 or more.
  static std::chrono::milliseconds delay(const Json::Value& section, const std::string& model,
                                         const std::string& key);
  // A number of milliseconds, more than 0.
  static std::chrono::milliseconds duration(const Json::Value& section, const std::string& model,
                                            const std::string& key);
  // true or false.
  static bool flag(const Json::Value& section, const std::string& model, const std::string& key);
};

}  // namespace halvor::sim
