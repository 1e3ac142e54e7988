#pragma once

#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "sim/models/Model.h"
#include "tavelabi/Resource.h"

namespace halvor::sim {

// The controller's network under "/network" and the platform's under "/network/qCore".
// A controller value written as "set_value" is taken by the next tick when it has the right form
// (an IPv4 address, or a bool for "dhcpEnabled"); otherwise "set_value" falls back to "value".
// The platform keeps its own state: "/qCore/getip" copies it into the resources, "/qCore/setip"
// changes it from the keys of the command ("dns1" ... "lan2connected", all of them required; the
// MAC addresses and connection states are the platform's and are not changed).
class NetworkModel : public Model {
 public:
  std::string name() const override { return "network"; }
  std::vector<Command> commands() override;
  void seed() override;
  void tick(const tavelabi::TimePoint& now) override;

  // Whether text is an IPv4 address in dotted form.
  static bool isAddress(const std::string& text);

 private:
  tavelabi::Resource getPlatform(tavelabi::ResourceAction& action);
  tavelabi::Resource setPlatform(tavelabi::ResourceAction& action);
  void follow(const std::string& path, bool isFlag);
  void update(const std::string& path, const tavelabi::Resource& values);

  // The platform's state by command key; guarded: commands run on callers' threads.
  std::mutex mutex_;
  std::map<std::string, tavelabi::ResourceValue> platform_;
};

}  // namespace halvor::sim
