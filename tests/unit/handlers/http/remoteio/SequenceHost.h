#pragma once

#include <deque>
#include <map>
#include <mutex>
#include <string>

#include "support/RecordingHost.h"

namespace halvor::kelo::test {

// A RecordingHost whose reads of some paths answer a sequence: each Read takes the next answer,
// and the last one stays, so that a test can show a host that settles after a few reads. Every
// action is still recorded, and other paths answer as a RecordingHost does.
class SequenceHost : public RecordingHost {
 public:
  SequenceHost& readsInTurn(const std::string& path, std::deque<tavelabi::Resource> answers) {
    answer(tavelabi::CCRUD::Read, path, answers.back());
    std::lock_guard lock(mutex_);
    sequences_[path] = std::move(answers);
    return *this;
  }

  tavelabi::Resource processResourceAction(tavelabi::ResourceAction& action) override {
    tavelabi::Resource answer = RecordingHost::processResourceAction(action);
    if (action.action != tavelabi::CCRUD::Read) return answer;
    std::lock_guard lock(mutex_);
    auto found = sequences_.find(action.path);
    if (found == sequences_.end()) return answer;
    answer = found->second.front();
    if (found->second.size() > 1) found->second.pop_front();
    action.resource = answer;
    return answer;
  }

 private:
  std::mutex mutex_;
  std::map<std::string, std::deque<tavelabi::Resource>> sequences_;
};

}  // namespace halvor::kelo::test
