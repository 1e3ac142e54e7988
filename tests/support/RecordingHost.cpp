#include "support/RecordingHost.h"

#include <stdexcept>

namespace halvor::kelo::test {

RecordingHost& RecordingHost::answer(const std::string& path, tavelabi::Resource resource) {
  std::lock_guard lock(mutex_);
  replies_[{kAnyVerb, path}] = Reply{std::move(resource), nullptr};
  return *this;
}

RecordingHost& RecordingHost::answer(tavelabi::CCRUD verb, const std::string& path,
                                     tavelabi::Resource resource) {
  std::lock_guard lock(mutex_);
  replies_[{static_cast<int>(verb), path}] = Reply{std::move(resource), nullptr};
  return *this;
}

RecordingHost& RecordingHost::fail(const std::string& path, Failure failure) {
  std::lock_guard lock(mutex_);
  replies_[{kAnyVerb, path}] = Reply{{}, std::move(failure)};
  return *this;
}

RecordingHost& RecordingHost::otherwise(tavelabi::Resource resource) {
  std::lock_guard lock(mutex_);
  otherwise_ = std::move(resource);
  return *this;
}

void RecordingHost::clearActions() {
  std::lock_guard lock(mutex_);
  actions_.clear();
}

std::vector<tavelabi::ResourceAction> RecordingHost::actions() const {
  std::lock_guard lock(mutex_);
  return actions_;
}

std::vector<tavelabi::ResourceAction> RecordingHost::actionsOn(const std::string& path) const {
  std::vector<tavelabi::ResourceAction> matching;
  for (const tavelabi::ResourceAction& action : actions()) {
    if (action.path == path) matching.push_back(action);
  }
  return matching;
}

const tavelabi::ResourceAction& RecordingHost::onlyAction() const {
  std::lock_guard lock(mutex_);
  if (actions_.size() != 1) {
    throw std::logic_error("expected one action, got " + std::to_string(actions_.size()));
  }
  return actions_.front();
}

tavelabi::Resource RecordingHost::processResourceAction(tavelabi::ResourceAction& action) {
  Reply reply;
  {
    std::lock_guard lock(mutex_);
    actions_.push_back(action);
    auto found = replies_.find({static_cast<int>(action.action), action.path});
    if (found == replies_.end()) found = replies_.find({kAnyVerb, action.path});
    if (found != replies_.end()) {
      reply = found->second;
    } else if (otherwise_) {
      reply.resource = *otherwise_;
    } else {
      throw std::logic_error(std::string("RecordingHost has no answer for ") +
                             tavelabi::toString(action.action) + " " + action.path);
    }
  }
  if (reply.failure) reply.failure();
  // As the host does: the answer is also written into the action's resource.
  action.resource = reply.resource;
  return reply.resource;
}

}  // namespace halvor::kelo::test
