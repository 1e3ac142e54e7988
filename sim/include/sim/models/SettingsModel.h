#pragma once

#include <chrono>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "sim/models/Model.h"
#include "tavelabi/Resource.h"

namespace halvor::sim {

// The settings pages of the demo transmitter: "/collection/<name>" describes a page (RF output,
// audio, RDS, network), "/collection/<name>/link" offers it for navigation, and the page names
// its settings under "/settings/...", some with a reading beside
// them under "/settings/monitors/...". A setting written with "set_value" moves: it reports
// "transitioning" true and a rising "progress" for a while, then takes the new "value", or,
// when a fixture says so, keeps the old one and reports "errorOccurred" with "errorMessage".
class SettingsModel : public Model {
 public:
  struct Page {
    std::string name;
    std::string label;
    std::string icon;
  };

  std::string name() const override { return "settings"; }
  std::string fixtureSection() const override { return "settings"; }
  void applyFixture(const Json::Value& section) override;
  void seed() override;
  void tick(const tavelabi::TimePoint& now) override;

  static const std::vector<Page>& pages();
  // Every setting path the pages name, in order.
  static std::vector<std::string> settingPaths();
  // The collection resource of one page, "/collection/<name>".
  static tavelabi::Resource collection(const Page& page);
  // Its navigation entry, "/collection/<name>/link".
  static tavelabi::Resource link(const Page& page);

 private:
  struct Transition {
    tavelabi::ResourceValue target;
    tavelabi::TimePoint start;
    int progress = 0;
  };

  // What a fixture may change: how long a transition lasts and which settings fail.
  struct Behaviour {
    std::chrono::milliseconds duration{3000};
    std::map<std::string, std::string> failures;
  };

  void follow(const std::string& path, const Behaviour& behaviour, const tavelabi::TimePoint& now);
  void begin(const std::string& path, const tavelabi::ResourceValue& target,
             const tavelabi::TimePoint& now);
  void advance(const std::string& path, const Behaviour& behaviour, const tavelabi::TimePoint& now);
  void settle(const std::string& path, const tavelabi::ResourceValue& target);
  void update(const std::string& path, const tavelabi::Resource& values);

  // Guards the fixture's behaviour, which a fixture may set while the loop runs.
  std::mutex mutex_;
  Behaviour behaviour_;
  // The transitions under way; only tick() touches them, on the loop's thread.
  std::map<std::string, Transition> transitions_;
};

}  // namespace halvor::sim
