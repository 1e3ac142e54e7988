#include "sim/SessionTable.h"

#include <stdexcept>
#include <utility>

#include "sim/RandomText.h"
#include "tavelabi/Exceptions.h"

namespace halvor::sim {

SessionTable::SessionTable(Clock clock, std::chrono::milliseconds timeout)
    : clock_(clock ? std::move(clock) : Clock(&std::chrono::steady_clock::now)),
      timeout_(timeout) {}

std::string SessionTable::missingText(const std::string& sessionId) {
  return "Session " + sessionId + " does not exist";
}

SessionRecord SessionTable::create(bool pluginSession, const std::string& sessionId) {
  SessionRecord record;
  record.pluginSession = pluginSession;
  record.created = RandomText::isoTimeNow();
  record.lastActivity = clock_();
  std::lock_guard lock(mutex_);
  if (sessionId.empty()) {
    do {
      record.sessionId = RandomText::sessionId();
    } while (sessions_.count(record.sessionId) != 0);
  } else if (liveRecord(sessionId) != nullptr) {
    throw std::invalid_argument("session identifier " + sessionId + " is in use");
  } else {
    record.sessionId = sessionId;
  }
  sessions_[record.sessionId] = record;
  return record;
}

bool SessionTable::isExpired(const SessionRecord& record,
                             std::chrono::steady_clock::time_point now) const {
  return !record.pluginSession && now - record.lastActivity > timeout_;
}

SessionRecord* SessionTable::liveRecord(const std::string& sessionId) {
  return liveRecord(sessionId, clock_());
}

SessionRecord* SessionTable::liveRecord(const std::string& sessionId,
                                        std::chrono::steady_clock::time_point now) {
  auto found = sessions_.find(sessionId);
  if (found == sessions_.end()) return nullptr;
  if (isExpired(found->second, now)) {
    sessions_.erase(found);
    return nullptr;
  }
  return &found->second;
}

// Every host action passes here: the clock is read once, for the expiry and the activity both.
SessionRecord& SessionTable::checkedRecord(const std::string& sessionId, bool countsAsActivity) {
  const std::chrono::steady_clock::time_point now = clock_();
  SessionRecord* record = liveRecord(sessionId, now);
  if (record == nullptr) throw tavelabi::NonExistentSessionException(missingText(sessionId));
  if (countsAsActivity) record->lastActivity = now;
  return *record;
}

SessionRecord SessionTable::check(const std::string& sessionId, bool countsAsActivity) {
  std::lock_guard lock(mutex_);
  return checkedRecord(sessionId, countsAsActivity);
}

SessionUser SessionTable::checkUser(const std::string& sessionId, bool countsAsActivity) {
  std::lock_guard lock(mutex_);
  const SessionRecord& record = checkedRecord(sessionId, countsAsActivity);
  return SessionUser{record.loggedIn, record.username};
}

std::optional<SessionRecord> SessionTable::find(const std::string& sessionId) {
  std::lock_guard lock(mutex_);
  SessionRecord* record = liveRecord(sessionId);
  if (record == nullptr) return std::nullopt;
  return *record;
}

SessionRecord SessionTable::login(const std::string& sessionId, const std::string& username) {
  std::lock_guard lock(mutex_);
  SessionRecord* record = liveRecord(sessionId);
  if (record == nullptr) throw tavelabi::NonExistentSessionException(missingText(sessionId));
  record->username = username;
  record->loggedIn = true;
  record->lastActivity = clock_();
  return *record;
}

void SessionTable::renameUser(const std::string& from, const std::string& to) {
  std::lock_guard lock(mutex_);
  for (auto& [id, record] : sessions_) {
    if (record.loggedIn && record.username == from) record.username = to;
  }
}

void SessionTable::end(const std::string& sessionId) {
  std::lock_guard lock(mutex_);
  sessions_.erase(sessionId);
}

std::size_t SessionTable::expireIdle() {
  std::lock_guard lock(mutex_);
  auto now = clock_();
  return std::erase_if(sessions_, [&](const auto& entry) { return isExpired(entry.second, now); });
}

void SessionTable::setTimeout(std::chrono::milliseconds timeout) {
  std::lock_guard lock(mutex_);
  timeout_ = timeout;
}

std::chrono::milliseconds SessionTable::timeout() const {
  std::lock_guard lock(mutex_);
  return timeout_;
}

std::size_t SessionTable::size() const {
  std::lock_guard lock(mutex_);
  return sessions_.size();
}

}  // namespace halvor::sim
