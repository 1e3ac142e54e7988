#pragma once

#include <chrono>
#include <functional>
#include <mutex>
#include <optional>
#include <random>
#include <string>
#include <unordered_map>

namespace halvor::sim {

// One session of the host.
struct SessionRecord {
  std::string sessionId;
  std::string username;  // empty until logged in
  std::string host = "localhost";
  std::string created;  // ISO time
  bool loggedIn = false;
  bool pluginSession = false;  // made by createPluginSession; never expires
  std::chrono::steady_clock::time_point lastActivity;
};

// What the rights check needs of a session: whether it is logged in, and as whom.
struct SessionUser {
  bool loggedIn = false;
  std::string username;
};

// The host's sessions with inactivity expiry. A session that has been idle for longer than the
// timeout is gone: the next look at it removes it and reports it as unknown.
class SessionTable {
 public:
  using Clock = std::function<std::chrono::steady_clock::time_point()>;

  SessionTable(Clock clock, std::chrono::milliseconds timeout);

  // A new session, not logged in; a fresh random identifier unless one is given.
  // An identifier that is in use throws std::invalid_argument.
  SessionRecord create(bool pluginSession, const std::string& sessionId = {});
  // The live session, counted as activity when asked to. NonExistentSessionException for an
  // empty, unknown or expired identifier.
  SessionRecord check(const std::string& sessionId, bool countsAsActivity);
  // check() for every action of a plug-in: the same checks and activity, without copying the
  // whole record.
  SessionUser checkUser(const std::string& sessionId, bool countsAsActivity);
  // The live session without counting activity; nothing when it is unknown or expired.
  std::optional<SessionRecord> find(const std::string& sessionId);
  // Logs the session in as the user. NonExistentSessionException when it is gone.
  SessionRecord login(const std::string& sessionId, const std::string& username);
  // Sessions logged in as `from` are logged in as `to` from now on (a renamed user).
  void renameUser(const std::string& from, const std::string& to);
  // Ends the session; an unknown one is no error.
  void end(const std::string& sessionId);
  // Removes every expired session; returns how many.
  std::size_t expireIdle();

  void setTimeout(std::chrono::milliseconds timeout);
  std::chrono::milliseconds timeout() const;
  std::size_t size() const;

  static std::string missingText(const std::string& sessionId);

 private:
  bool isExpired(const SessionRecord& record, std::chrono::steady_clock::time_point now) const;
  // Requires mutex_.
  SessionRecord* liveRecord(const std::string& sessionId);
  // The same, at a time the caller has read already. Requires mutex_.
  SessionRecord* liveRecord(const std::string& sessionId,
                            std::chrono::steady_clock::time_point now);
  // The live record, its activity counted when asked to; NonExistentSessionException when there
  // is none. Requires mutex_.
  SessionRecord& checkedRecord(const std::string& sessionId, bool countsAsActivity);

  Clock clock_;
  mutable std::mutex mutex_;
  std::chrono::milliseconds timeout_;
  std::unordered_map<std::string, SessionRecord> sessions_;
};

}  // namespace halvor::sim
