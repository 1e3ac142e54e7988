#include "sim/DemoModels.h"

#include <chrono>

#include "sim/RandomText.h"
#include "sim/SimTavel.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::sim {

using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceAction;
using tavelabi::ResourceValue;

DemoModels::DemoModels(SimTavel& host) : host_(host) {}

void DemoModels::tick(const tavelabi::TimePoint& now) {
  if (created_ && now - lastUpdate_ < std::chrono::seconds(1)) return;
  CCRUD verb = created_ ? CCRUD::Update : CCRUD::Create;
  ResourceAction clock(verb, kClockPath, Resource(ResourceValue(RandomText::isoTimeNow())), nullptr,
                       "");
  host_.processInternalAction(clock);
  ResourceAction counter(verb, kCounterPath, Resource(ResourceValue(counter_)), nullptr, "");
  host_.processInternalAction(counter);
  ++counter_;
  created_ = true;
  lastUpdate_ = now;
}

}  // namespace halvor::sim
