#include "sim/models/DemoModel.h"

#include <chrono>
#include <limits>
#include <optional>

#include "sim/RandomText.h"
#include "sim/SimTavel.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::sim {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceAction;
using tavelabi::ResourceValue;
using tavelabi::ResourceValueType;

void DemoModel::seed() {
  host().createIfAbsent(kClockPath, Resource(ResourceValue(RandomText::isoTimeNow())));
  host().createIfAbsent(kCounterPath, Resource(ResourceValue(0)));
}

void DemoModel::tick(const tavelabi::TimePoint& now) {
  if (!started_) {
    started_ = true;
    lastUpdate_ = now;
    return;
  }
  if (now - lastUpdate_ < std::chrono::seconds(1)) return;
  write(kClockPath, ResourceValue(RandomText::isoTimeNow()));
  write(kCounterPath, ResourceValue(nextCount()));
  lastUpdate_ = now;
}

// Counts on from the stored value, so that a value set by a fixture or a client is honoured.
int DemoModel::nextCount() const {
  std::optional<Resource> stored = host().peek(kCounterPath);
  if (!stored) return 0;
  auto value = stored->values.find("value");
  if (value == stored->values.end() || value->second.getType() != ResourceValueType::INT32) {
    return 0;
  }
  int count = value->second.getIntValue();
  return count == std::numeric_limits<int>::max() ? 0 : count + 1;
}

// An Update, or a Create when a client has deleted the resource meanwhile.
void DemoModel::write(const char* path, const ResourceValue& value) {
  if (host().createIfAbsent(path, Resource(value))) return;
  ResourceAction update(CCRUD::Update, path, Resource(value), nullptr, "");
  host().processInternalAction(update);
}

}  // namespace halvor::sim
