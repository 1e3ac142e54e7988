#pragma once

#include <memory>
#include <set>
#include <string>

#include "tavelabi/GlobMatcher.h"
#include "tavelabi/ResourceAction.h"
#include "tavelabi/Types.h"

namespace halvor::tavelabi {

// A listener of the host's actions.
class IResourceListener {
 public:
  virtual ~IResourceListener() = default;

  // What the host calls: raises the action's hopCount by one and hands it on.
  virtual void notifyAction(const TimePoint& now, ResourceAction& action) = 0;
  virtual std::string getPattern() = 0;
  virtual GlobMatcher* getMatcher() = 0;
  virtual bool hasAction(const CCRUD& action) = 0;
  virtual operator std::string() = 0;  // NOLINT(google-explicit-constructor)
  virtual void processResourceListener(const TimePoint& now, ResourceAction& action) = 0;
};

// A listener of the verbs in its set on the paths that its glob matches.
class AbstractResourceListener : public IResourceListener {
 public:
  AbstractResourceListener(const std::string& pattern, std::set<CCRUD> actions);
  ~AbstractResourceListener() override;

  AbstractResourceListener(const AbstractResourceListener&) = delete;
  AbstractResourceListener& operator=(const AbstractResourceListener&) = delete;

  void notifyAction(const TimePoint& now, ResourceAction& action) override;
  std::string getPattern() override;
  GlobMatcher* getMatcher() override;
  bool hasAction(const CCRUD& action) override;

 private:
  std::set<CCRUD> actions_;
  std::unique_ptr<GlobMatcher> matcher_;
};

}  // namespace halvor::tavelabi
