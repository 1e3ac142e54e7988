#include "tavelabi/IResourceListener.h"

#include <utility>

namespace halvor::tavelabi {

AbstractResourceListener::AbstractResourceListener(const std::string& pattern,
                                                   std::set<CCRUD> actions)
    : actions_(std::move(actions)), matcher_(std::make_unique<GlobMatcher>(pattern)) {}

AbstractResourceListener::~AbstractResourceListener() = default;

void AbstractResourceListener::notifyAction(const TimePoint& now, ResourceAction& action) {
  ++action.hopCount;
  processResourceListener(now, action);
}

std::string AbstractResourceListener::getPattern() { return matcher_->getPattern(); }

GlobMatcher* AbstractResourceListener::getMatcher() { return matcher_.get(); }

bool AbstractResourceListener::hasAction(const CCRUD& action) {
  return actions_.find(action) != actions_.end();
}

}  // namespace halvor::tavelabi
