#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "sim/AccessRights.h"
#include "sim/CommandTable.h"
#include "sim/Fixture.h"
#include "sim/ListenerDispatcher.h"
#include "sim/ResourceTree.h"
#include "sim/SessionTable.h"
#include "sim/UserDirectory.h"
#include "sim/models/Model.h"
#include "tavelabi/ITavel.h"
#include "tavelabi/PluginStatus.h"

namespace halvor::sim {

struct SimTavelOptions {
  std::chrono::milliseconds sessionTimeout = std::chrono::seconds(900);
  // Time source of the session timer; the steady clock when empty. Tests inject their own.
  SessionTable::Clock clock;
  // Whether status reports and notices are printed on the console.
  bool echoToConsole = true;
};

struct StatusRecord {
  std::string pluginName;
  tavelabi::PluginStatus::Code code;
  std::string text;
};

// The simulated host: a resource tree, users with roles, sessions with inactivity expiry,
// listeners, a table of commands and the models of the transmitter's domains. Every ITavel
// operation is safe from any number of threads.
class SimTavel : public tavelabi::ITavel {
 public:
  static constexpr const char* kUsersPrefix = "/user/users/";
  static constexpr const char* kSessionsPrefix = "/session/sessions/";
  static constexpr const char* kBypassKey = "byPassSessionActivityTimerUpdate";

  explicit SimTavel(SimTavelOptions options = {});
  ~SimTavel() override;

  SimTavel(const SimTavel&) = delete;
  SimTavel& operator=(const SimTavel&) = delete;

  // ITavel
  void setPluginStatus(tavelabi::IPluginInfo* plugin,
                       const tavelabi::PluginStatus& status) override;
  tavelabi::Resource processResourceAction(tavelabi::ResourceAction& action) override;
  void addResourceListener(tavelabi::IPluginInfo* plugin,
                           tavelabi::IResourceListener* listener) override;
  void removeResourceListener(tavelabi::IPluginInfo* plugin,
                              tavelabi::IResourceListener* listener) override;
  tavelabi::Resource createPluginSession(tavelabi::IPluginInfo* plugin) override;
  tavelabi::Resource loginPlugin(tavelabi::IPluginInfo* plugin, const std::string& username,
                                 const std::string& password, tavelabi::Session session) override;

  // The host's own actions (models, seeding): no session, no rights, listeners as usual.
  tavelabi::Resource processInternalAction(tavelabi::ResourceAction& action);
  // A Create by the host that stores the resource only when there is none at the path (models
  // seed their resources so, leaving fixtures' values alone); true when it stored it.
  bool createIfAbsent(const std::string& path, const tavelabi::Resource& resource);

  // Models (sim/models/Model.h; ModelRegistry::installAll installs every one). Adds the model's
  // commands, hands it its sections of the fixtures applied so far, lets it seed its resources
  // and ticks it from then on. DuplicateCommandError, with nothing installed, when one of its
  // commands is served already.
  void installModel(std::unique_ptr<Model> model);
  // Commands served by `owner` (a name for messages); DuplicateCommandError as above.
  void addCommands(const std::vector<Command>& commands, const std::string& owner);
  // One pass of every model; the host's loop calls it.
  void tickModels(const tavelabi::TimePoint& now);
  std::vector<std::string> modelNames() const;
  std::vector<std::string> commandPaths() const;

  // Seeding. A user becomes the resource "/user/users/<name>".
  void addUser(const FixtureUser& user);
  void addAutoLoginRule(const AutoLoginRule& rule);
  // Users, resources, rules, timeout and model sections of a fixture, in that order; resources
  // replace earlier ones at the same path (models' resources too) and are not dispatched to
  // listeners. A section goes to the installed model that reads it, and to a model installed
  // later.
  void applyFixture(const Fixture& fixture);
  // A logged-in session for the user, with the given identifier or a fresh one. Throws
  // std::invalid_argument for an unknown user or an identifier in use.
  std::string openSession(const std::string& username, const std::string& sessionId = {});
  void setSessionTimeout(std::chrono::milliseconds timeout);
  // Removes idle sessions now; the host's loop calls it.
  std::size_t expireIdleSessions();

  // Observation, for tests and the console.
  std::vector<StatusRecord> statusHistory() const;
  unsigned restartRequests() const;
  // Called by the command "/command/restartTavel" after counting it (tavel-sim restarts itself).
  void setRestartHandler(std::function<void()> handler);
  std::optional<tavelabi::Resource> peek(const std::string& path) const;
  std::vector<std::string> listPaths(const std::string& glob) const;
  // Blocks until every Create and Update so far has been handed to the listeners.
  void waitForListeners();
  std::size_t sessionCount() const;

 private:
  static bool countsAsActivity(const tavelabi::ResourceAction& action);
  void authorize(const SessionUser& session, const tavelabi::ResourceAction& action) const;
  std::optional<Role> roleOf(const std::string& username) const;
  tavelabi::Resource execute(tavelabi::ResourceAction& action);
  // Queues a Create or Update for the listeners with the resource now stored at its path.
  void enqueueStored(const tavelabi::ResourceAction& action, const tavelabi::Resource& stored);
  tavelabi::Resource read(const tavelabi::ResourceAction& action);
  tavelabi::Resource readSession(const std::string& path);
  tavelabi::Resource runCommand(tavelabi::ResourceAction& action);
  std::vector<Command> builtInCommands();
  void applySection(const std::string& section, const Json::Value& settings);
  tavelabi::Resource listResources(const tavelabi::ResourceAction& action) const;
  tavelabi::Resource newSession();
  tavelabi::Resource login(const tavelabi::ResourceAction& action);
  tavelabi::Resource autoLogin(const tavelabi::ResourceAction& action);
  tavelabi::Resource logout(const tavelabi::ResourceAction& action);
  tavelabi::Resource changePassword(const tavelabi::ResourceAction& action);
  tavelabi::Resource newUser(const tavelabi::ResourceAction& action);
  // A new user record's rights role from its "roles" (read-only, and "roles" of that one role,
  // when it has none), and "activities", "guid" and "autoLogin" (false) when absent.
  static void completeUserRecord(tavelabi::Resource& record);
  // Create, Update and Delete of "/user/users/<name>": the password goes to the directory as a
  // hash and never into the tree; "role" follows "roles"; a new "username" renames the user.
  tavelabi::Resource writeUser(tavelabi::ResourceAction& action, const std::string& username);
  tavelabi::Resource renameUser(tavelabi::ResourceAction& action, const std::string& from,
                                const std::string& to, const tavelabi::Resource& changes);
  // The names of every user, in name order.
  std::vector<std::string> userNames() const;
  // A glob read by someone else than an administrator: other users' records left out.
  void withoutOtherUsers(tavelabi::Resource& answer, const std::string& username) const;
  tavelabi::Resource restartTavel(const tavelabi::ResourceAction& action);
  // Throws AuthorizationFailure("Invalid username or password") when they do not match.
  void checkPassword(const std::string& username, const std::string& password) const;
  std::optional<std::string> autoLoginUser(const std::string& host) const;
  void notice(const std::string& text) const;

  SimTavelOptions options_;
  ResourceTree tree_;
  SessionTable sessions_;
  ListenerDispatcher listeners_;
  CommandTable commands_;
  // The models' checks of writes (Model::writeChecks), by path.
  CommandTable writeChecks_;

  // Held while models are installed, ticked or handed fixture sections.
  mutable std::mutex modelsMutex_;
  std::vector<std::unique_ptr<Model>> models_;
  std::vector<std::pair<std::string, Json::Value>> fixtureSections_;

  UserDirectory users_;
  // Held by every write of a user record, so that a rename is not interleaved with another.
  mutable std::mutex userWritesMutex_;

  mutable std::mutex rulesMutex_;
  std::vector<AutoLoginRule> autoLoginRules_;

  mutable std::mutex statusMutex_;
  std::vector<StatusRecord> statusHistory_;
  std::atomic<unsigned> restartRequests_{0};
  // Set before the plug-in is loaded and never changed afterwards.
  std::function<void()> restartHandler_;
};

}  // namespace halvor::sim
