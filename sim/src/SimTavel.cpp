#include "sim/SimTavel.h"

#include <array>
#include <cstdint>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "sim/Console.h"
#include "sim/RandomText.h"
#include "tavelabi/Exceptions.h"
#include "tavelabi/IPluginInfo.h"

namespace halvor::sim {

using tavelabi::AuthorizationFailure;
using tavelabi::CCRUD;
using tavelabi::IPluginInfo;
using tavelabi::Resource;
using tavelabi::ResourceAction;
using tavelabi::ResourceValue;
using tavelabi::ResourceValueType;

namespace {

constexpr const char* kInvalidCredentials = "Invalid username or password";

bool startsWith(const std::string& text, std::string_view prefix) {
  return text.compare(0, prefix.size(), prefix) == 0;
}

// A text value of the payload, or nothing when the key is absent or holds no text.
std::optional<std::string> payloadText(const Resource& payload, const std::string& key) {
  auto found = payload.values.find(key);
  if (found == payload.values.end() || found->second.getType() != ResourceValueType::STRING) {
    return std::nullopt;
  }
  return found->second.getStringValue();
}

std::string pluginName(IPluginInfo* plugin) {
  return plugin == nullptr ? std::string("unknown plug-in") : plugin->getName();
}

// "localhost:7000" and "[::1]:7000" without their port.
std::string withoutPort(const std::string& host) {
  std::size_t colon = host.rfind(':');
  if (colon == std::string::npos) return host;
  std::size_t bracket = host.rfind(']');
  if (bracket != std::string::npos && bracket > colon) return host;
  if (host.find(':') != colon && host.front() != '[') return host;  // a bare IPv6 address
  return host.substr(0, colon);
}

// The name of "/user/users/<name>" (one segment, not the list), or nothing for another path.
std::optional<std::string> userRecordName(const std::string& path) {
  const std::string prefix = SimTavel::kUsersPrefix;
  if (!startsWith(path, prefix)) return std::nullopt;
  std::string name = path.substr(prefix.size());
  if (name.empty() || name.find('/') != std::string::npos) return std::nullopt;
  return name;
}

Resource sessionResource(const SessionRecord& record) {
  Resource resource;
  resource.values["sessionId"] = ResourceValue(record.sessionId);
  resource.values["username"] = ResourceValue(record.username);
  resource.values["host"] = ResourceValue(record.host);
  resource.values["created"] = ResourceValue(record.created);
  return resource;
}

}  // namespace

SimTavel::SimTavel(SimTavelOptions options)
    : options_(std::move(options)), sessions_(options_.clock, options_.sessionTimeout) {
  commands_.add(builtInCommands(), "the host");
}

SimTavel::~SimTavel() { listeners_.stop(); }

std::vector<Command> SimTavel::builtInCommands() {
  return {
      {"/resource/list", [this](ResourceAction& action) { return listResources(action); }},
      {"/session/command/newSession", [this](ResourceAction&) { return newSession(); }},
      {"/user/command/login", [this](ResourceAction& action) { return login(action); }},
      {"/user/command/autoLogin", [this](ResourceAction& action) { return autoLogin(action); }},
      {"/user/command/logout", [this](ResourceAction& action) { return logout(action); }},
      {"/user/command/changePassword",
       [this](ResourceAction& action) { return changePassword(action); }},
      {"/user/command/newUser", [this](ResourceAction& action) { return newUser(action); }},
      {"/command/restartTavel", [this](ResourceAction& action) { return restartTavel(action); }},
  };
}

void SimTavel::notice(const std::string& text) const {
  if (options_.echoToConsole) Console::line(text);
}

// ---- ITavel ---------------------------------------------------------------------------------

void SimTavel::setPluginStatus(IPluginInfo* plugin, const tavelabi::PluginStatus& status) {
  StatusRecord record{pluginName(plugin), status.getCode(), status.getText()};
  {
    std::lock_guard lock(statusMutex_);
    statusHistory_.push_back(record);
  }
  notice("[status] " + record.pluginName + ": " + tavelabi::PluginStatus::codeName(record.code) +
         " " + record.text);
}

Resource SimTavel::processResourceAction(ResourceAction& action) {
  const SessionUser session = sessions_.checkUser(action.sessionId, countsAsActivity(action));
  authorize(session, action);
  Resource answer = execute(action);
  if (action.action == CCRUD::Read && action.path.find('*') != std::string::npos &&
      roleOf(session.username) != Role::Administrator) {
    withoutOtherUsers(answer, session.username);
  }
  action.resource = answer;
  return answer;
}

void SimTavel::addResourceListener(IPluginInfo* plugin, tavelabi::IResourceListener* listener) {
  listeners_.add(plugin, listener);
}

void SimTavel::removeResourceListener(IPluginInfo* plugin, tavelabi::IResourceListener* listener) {
  listeners_.remove(plugin, listener);
}

Resource SimTavel::createPluginSession(IPluginInfo* /*plugin*/) {
  return sessionResource(sessions_.create(true));
}

Resource SimTavel::loginPlugin(IPluginInfo* /*plugin*/, const std::string& username,
                               const std::string& password, tavelabi::Session session) {
  checkPassword(username, password);
  return sessionResource(sessions_.login(session.sessionId, username));
}

// ---- The host's own actions -------------------------------------------------------------------

Resource SimTavel::processInternalAction(ResourceAction& action) {
  Resource answer = execute(action);
  action.resource = answer;
  return answer;
}

bool SimTavel::createIfAbsent(const std::string& path, const Resource& resource) {
  ResourceAction action(CCRUD::Create, path, resource, nullptr, "");
  return tree_.createIfAbsent(path, resource,
                              [&](const Resource& stored) { enqueueStored(action, stored); });
}

// ---- Models -----------------------------------------------------------------------------------

void SimTavel::installModel(std::unique_ptr<Model> model) {
  model->attach(*this);
  addCommands(model->commands(), "model " + model->name());
  writeChecks_.add(model->writeChecks(), "model " + model->name());
  std::lock_guard lock(modelsMutex_);
  std::string section = model->fixtureSection();
  for (const auto& [name, settings] : fixtureSections_) {
    if (!section.empty() && name == section) model->applyFixture(settings);
  }
  // Kept before seeding: its commands are in the table now and must not outlive it.
  models_.push_back(std::move(model));
  models_.back()->seed();
}

void SimTavel::addCommands(const std::vector<Command>& commands, const std::string& owner) {
  commands_.add(commands, owner);
}

void SimTavel::tickModels(const tavelabi::TimePoint& now) {
  std::lock_guard lock(modelsMutex_);
  for (const auto& model : models_) {
    // One model's failure is reported and does not keep the others from their pass.
    try {
      model->tick(now);
    } catch (const std::exception& error) {
      Console::errorLine("[model] " + model->name() + " tick failed: " + error.what());
    }
  }
}

std::vector<std::string> SimTavel::modelNames() const {
  std::lock_guard lock(modelsMutex_);
  std::vector<std::string> names;
  for (const auto& model : models_) names.push_back(model->name());
  return names;
}

std::vector<std::string> SimTavel::commandPaths() const { return commands_.paths(); }

void SimTavel::applySection(const std::string& section, const Json::Value& settings) {
  std::lock_guard lock(modelsMutex_);
  fixtureSections_.emplace_back(section, settings);
  for (const auto& model : models_) {
    if (model->fixtureSection() == section) model->applyFixture(settings);
  }
}

// ---- Seeding ----------------------------------------------------------------------------------

void SimTavel::addUser(const FixtureUser& user) {
  std::optional<Role> role = AccessRights::parseRole(user.role);
  if (!role) throw std::invalid_argument("user " + user.name + " has unknown role " + user.role);
  Resource resource;
  resource.values["username"] = ResourceValue(user.name);
  resource.values["guid"] = ResourceValue(RandomText::guid());
  resource.values["role"] = ResourceValue(user.role);
  resource.values["roles"] = UserDirectory::rolesOf(*role);
  resource.values["activities"] = ResourceValue(UserDirectory::activitiesOf(*role));
  resource.values["autoLogin"] = ResourceValue(!user.autoLoginHosts.empty());
  // The password is kept as a salted hash beside the tree, never in the user's record.
  users_.setPassword(user.name, user.password);
  tree_.create(kUsersPrefix + user.name, resource);
  for (const std::string& host : user.autoLoginHosts) addAutoLoginRule({host, user.name});
}

void SimTavel::addAutoLoginRule(const AutoLoginRule& rule) {
  // A rule lets its user in only while the user's own flag is on; a rule sets it.
  if (tree_.find(kUsersPrefix + rule.username)) {
    tree_.update(kUsersPrefix + rule.username, Resource("autoLogin", ResourceValue(true)));
  }
  std::lock_guard lock(rulesMutex_);
  autoLoginRules_.push_back(rule);
}

void SimTavel::applyFixture(const Fixture& fixture) {
  for (const FixtureUser& user : fixture.users) addUser(user);
  for (const auto& [path, resource] : fixture.resources) tree_.create(path, resource);
  for (const AutoLoginRule& rule : fixture.autoLogin) addAutoLoginRule(rule);
  if (fixture.sessionTimeoutSeconds) {
    setSessionTimeout(std::chrono::seconds(*fixture.sessionTimeoutSeconds));
  }
  for (const auto& [section, settings] : fixture.sections) applySection(section, settings);
}

std::string SimTavel::openSession(const std::string& username, const std::string& sessionId) {
  if (!tree_.find(kUsersPrefix + username)) {
    throw std::invalid_argument("no user " + username + " for session " + sessionId);
  }
  SessionRecord record = sessions_.create(false, sessionId);
  sessions_.login(record.sessionId, username);
  return record.sessionId;
}

void SimTavel::setSessionTimeout(std::chrono::milliseconds timeout) {
  sessions_.setTimeout(timeout);
}

std::size_t SimTavel::expireIdleSessions() { return sessions_.expireIdle(); }

// ---- Observation ----------------------------------------------------------------------------

std::vector<StatusRecord> SimTavel::statusHistory() const {
  std::lock_guard lock(statusMutex_);
  return statusHistory_;
}

unsigned SimTavel::restartRequests() const { return restartRequests_.load(); }

std::optional<Resource> SimTavel::peek(const std::string& path) const { return tree_.find(path); }

std::vector<std::string> SimTavel::listPaths(const std::string& glob) const {
  return tree_.list(glob);
}

void SimTavel::waitForListeners() { listeners_.waitIdle(); }

std::size_t SimTavel::sessionCount() const { return sessions_.size(); }

// ---- Sessions and rights ----------------------------------------------------------------------

bool SimTavel::countsAsActivity(const ResourceAction& action) {
  if (action.action != CCRUD::Read) return true;
  // Every action of a plug-in passes here: the key is made once, not for each lookup.
  static const std::string kBypass(kBypassKey);
  auto found = action.resource.values.find(kBypass);
  if (found == action.resource.values.end()) return true;
  return !(found->second.getType() == ResourceValueType::BOOL && found->second.getBoolValue());
}

std::optional<Role> SimTavel::roleOf(const std::string& username) const {
  // Asked on every action, so that a changed role counts at once. Each thread keeps its last
  // few answers (a plug-in's request alternates between its own session and its client's) with
  // the tree's generation they were read at: while no write to the tree has come since, the
  // user's record is what it was, and the answer stands.
  struct LastRole {
    std::uint64_t tree = 0;
    std::uint64_t generation = 0;
    std::string username;
    std::optional<Role> role;
  };
  thread_local std::array<LastRole, 4> last;
  thread_local std::size_t oldest = 0;
  const std::uint64_t generation = tree_.generation();
  for (const LastRole& known : last) {
    if (known.tree == tree_.identity() && known.generation == generation &&
        known.username == username) {
      return known.role;
    }
  }
  // Only the one text is copied, and the user's path is written into a buffer of the thread.
  static const std::string kRole("role");
  thread_local std::string userPath;
  userPath.assign(kUsersPrefix).append(username);
  std::optional<std::string> role = tree_.findText(userPath, kRole);
  LastRole& slot = last[oldest];
  oldest = (oldest + 1) % last.size();
  slot.tree = tree_.identity();
  slot.generation = generation;
  slot.username.assign(username);
  slot.role = role ? AccessRights::parseRole(*role) : std::nullopt;
  return slot.role;
}

// The session was found under action.sessionId, which is therefore its identifier.
void SimTavel::authorize(const SessionUser& session, const ResourceAction& action) const {
  if (AccessRights::isSessionCommand(action.action, action.path)) return;
  if (!session.loggedIn) {
    throw AuthorizationFailure("Session " + action.sessionId + " is not logged in and may not " +
                               tavelabi::toString(action.action) + " " + action.path);
  }
  std::optional<Role> role = roleOf(session.username);
  if (!role || !AccessRights::isAllowed(*role, action.action, action.path, session.username,
                                        action.resource, action.sessionId)) {
    throw AuthorizationFailure(
        AccessRights::refusalText(session.username, action.action, action.path));
  }
}

void SimTavel::checkPassword(const std::string& username, const std::string& password) const {
  if (!tree_.find(kUsersPrefix + username) || !users_.verify(username, password)) {
    throw AuthorizationFailure(kInvalidCredentials);
  }
}

// ---- Execution ----------------------------------------------------------------------------------

Resource SimTavel::execute(ResourceAction& action) {
  switch (action.action) {
    case CCRUD::Read:
      return read(action);
    case CCRUD::Create:
    case CCRUD::Update:
    case CCRUD::Delete:
      if (std::optional<std::string> name = userRecordName(action.path)) {
        return writeUser(action, *name);
      }
      break;
    default:
      break;
  }
  switch (action.action) {
    case CCRUD::Create:
      return tree_.create(action.path, action.resource,
                          [&](const Resource& stored) { enqueueStored(action, stored); });
    case CCRUD::Update:
      if (std::optional<CommandHandler> check = writeChecks_.find(action.path)) {
        Resource refusal = (*check)(action);
        if (!refusal.values.empty()) return refusal;
      }
      return tree_.update(action.path, action.resource,
                          [&](const Resource& stored) { enqueueStored(action, stored); });
    case CCRUD::Delete:
      return tree_.remove(action.path);
    case CCRUD::Command:
      return runCommand(action);
    case CCRUD::Read:  // answered above
    case CCRUD::None:
      break;
  }
  throw tavelabi::NonExistentResourcePathException(ResourceTree::missingText(action.path));
}

void SimTavel::enqueueStored(const ResourceAction& action, const Resource& stored) {
  ResourceAction copy(action.action, action.path, stored, action.pluginInfo, action.sessionId);
  copy.isLocalHost = action.isLocalHost;
  copy.hopCount = action.hopCount;
  listeners_.enqueue(copy);
}

Resource SimTavel::read(const ResourceAction& action) {
  // A glob answers every match at once, so that a client can subscribe to a whole subtree.
  if (action.path.find('*') != std::string::npos) return tree_.readGlob(action.path);
  if (startsWith(action.path, kSessionsPrefix)) return readSession(action.path);
  if (action.path == UserDirectory::kListPath) return Resource(ResourceValue(userNames()));
  if (std::optional<Resource> limits = UserDirectory::validation(action.path)) return *limits;
  return tree_.read(action.path);
}

Resource SimTavel::readSession(const std::string& path) {
  std::string sessionId = path.substr(std::string(kSessionsPrefix).size());
  std::optional<SessionRecord> record = sessions_.find(sessionId);
  if (!record) throw tavelabi::NonExistentSessionException(SessionTable::missingText(sessionId));
  return sessionResource(*record);
}

Resource SimTavel::runCommand(ResourceAction& action) {
  if (std::optional<CommandHandler> handler = commands_.find(action.path)) {
    return (*handler)(action);
  }
  if (listeners_.callCommandListeners(action) > 0) return action.resource;
  throw tavelabi::NonExistentResourcePathException(ResourceTree::missingText(action.path));
}

Resource SimTavel::listResources(const ResourceAction& action) const {
  std::string glob = payloadText(action.resource, "value").value_or("**");
  return Resource(ResourceValue(tree_.list(glob)));
}

Resource SimTavel::newSession() {
  return Resource("sessionId", ResourceValue(sessions_.create(false).sessionId));
}

Resource SimTavel::login(const ResourceAction& action) {
  std::optional<std::string> username = payloadText(action.resource, "username");
  std::optional<std::string> password = payloadText(action.resource, "password");
  if (!username || !password) throw AuthorizationFailure(kInvalidCredentials);
  checkPassword(*username, *password);
  return sessionResource(sessions_.login(action.sessionId, *username));
}

std::optional<std::string> SimTavel::autoLoginUser(const std::string& host) const {
  std::lock_guard lock(rulesMutex_);
  for (const AutoLoginRule& rule : autoLoginRules_) {
    if (rule.host == host || rule.host == withoutPort(host)) return rule.username;
  }
  return std::nullopt;
}

Resource SimTavel::autoLogin(const ResourceAction& action) {
  std::string host = payloadText(action.resource, "host").value_or("");
  std::optional<std::string> username = autoLoginUser(host);
  std::optional<ResourceValue> flag;
  if (username) flag = tree_.findValue(kUsersPrefix + *username, "autoLogin");
  if (!flag || flag->getType() != ResourceValueType::BOOL || !flag->getBoolValue()) {
    throw AuthorizationFailure("No auto login for host " + host);
  }
  return sessionResource(sessions_.login(action.sessionId, *username));
}

Resource SimTavel::logout(const ResourceAction& action) {
  sessions_.end(action.sessionId);
  return Resource();
}

Resource SimTavel::changePassword(const ResourceAction& action) {
  std::optional<SessionRecord> session = sessions_.find(action.sessionId);
  std::string username =
      payloadText(action.resource, "username").value_or(session ? session->username : "");
  std::optional<std::string> newPassword = payloadText(action.resource, "newPassword");
  if (!newPassword) throw std::invalid_argument("changePassword needs newPassword");
  bool ownPassword = session && session->username == username;
  if (ownPassword) {
    checkPassword(username, payloadText(action.resource, "oldPassword").value_or(""));
  }
  if (!tree_.find(kUsersPrefix + username)) {
    throw tavelabi::NonExistentResourcePathException(
        ResourceTree::missingText(kUsersPrefix + username));
  }
  users_.setPassword(username, *newPassword);
  return Resource("username", ResourceValue(username));
}

void SimTavel::completeUserRecord(Resource& record) {
  auto roles = record.values.find("roles");
  const Role role =
      roles == record.values.end() ? Role::ReadOnly : UserDirectory::roleOfRoles(roles->second);
  if (roles == record.values.end()) record.values["roles"] = UserDirectory::rolesOf(role);
  record.values["role"] = ResourceValue(std::string(AccessRights::roleName(role)));
  record.values.try_emplace("activities", ResourceValue(UserDirectory::activitiesOf(role)));
  record.values.try_emplace("guid", ResourceValue(RandomText::guid()));
  record.values.try_emplace("autoLogin", ResourceValue(false));
}

Resource SimTavel::newUser(const ResourceAction& action) {
  std::optional<std::string> username = payloadText(action.resource, "username");
  std::optional<std::string> password = payloadText(action.resource, "password");
  if (!username || username->empty() || username->find('/') != std::string::npos) {
    throw std::invalid_argument("newUser needs a username without '/'");
  }
  if (!password) throw std::invalid_argument("newUser needs a password");
  Resource record = action.resource;
  record.values.erase("password");
  completeUserRecord(record);
  std::lock_guard lock(userWritesMutex_);
  if (tree_.find(kUsersPrefix + *username)) {
    throw std::invalid_argument("User " + *username + " already exists");
  }
  users_.setPassword(*username, *password);
  ResourceAction create(CCRUD::Create, kUsersPrefix + *username, record, action.pluginInfo,
                        action.sessionId);
  tree_.create(create.path, record, [&](const Resource& stored) { enqueueStored(create, stored); });
  return Resource("username", ResourceValue(*username));
}

Resource SimTavel::writeUser(ResourceAction& action, const std::string& username) {
  std::lock_guard lock(userWritesMutex_);
  if (action.action == CCRUD::Delete) {
    Resource removed = tree_.remove(action.path);
    users_.remove(username);
    removed.values.erase("password");
    return removed;
  }
  Resource changes = action.resource;
  std::optional<std::string> password = payloadText(changes, "password");
  changes.values.erase("password");
  if (auto roles = changes.values.find("roles"); roles != changes.values.end()) {
    changes.values["role"] = ResourceValue(
        std::string(AccessRights::roleName(UserDirectory::roleOfRoles(roles->second))));
  }
  std::string target = payloadText(changes, "username").value_or(username);
  Resource stored;
  if (action.action == CCRUD::Update && target != username) {
    stored = renameUser(action, username, target, changes);
  } else if (action.action == CCRUD::Update) {
    stored = tree_.update(action.path, changes,
                          [&](const Resource& result) { enqueueStored(action, result); });
  } else {
    changes.values["username"] = ResourceValue(username);
    completeUserRecord(changes);
    stored = tree_.create(action.path, changes,
                          [&](const Resource& result) { enqueueStored(action, result); });
    target = username;
  }
  if (password) users_.setPassword(target, *password);
  return stored;
}

Resource SimTavel::renameUser(ResourceAction& action, const std::string& from,
                              const std::string& to, const Resource& changes) {
  if (to.empty() || to.find('/') != std::string::npos) {
    throw std::invalid_argument("A user name may not be empty or hold '/'");
  }
  if (tree_.find(kUsersPrefix + to)) throw std::invalid_argument("User " + to + " already exists");
  Resource record = tree_.read(action.path);
  for (const auto& [key, value] : changes.values) record.values[key] = value;
  ResourceAction create(CCRUD::Create, kUsersPrefix + to, record, action.pluginInfo,
                        action.sessionId);
  Resource stored = tree_.create(create.path, record,
                                 [&](const Resource& result) { enqueueStored(create, result); });
  tree_.remove(action.path);
  users_.rename(from, to);
  sessions_.renameUser(from, to);
  return stored;
}

std::vector<std::string> SimTavel::userNames() const {
  std::vector<std::string> names;
  const std::string prefix = kUsersPrefix;
  for (const std::string& path : tree_.list(prefix + "*"))
    names.push_back(path.substr(prefix.size()));
  return names;
}

void SimTavel::withoutOtherUsers(Resource& answer, const std::string& username) const {
  std::erase_if(answer.values, [&](const auto& entry) {
    std::optional<std::string> name = userRecordName(entry.first);
    return name && *name != username;
  });
}

Resource SimTavel::restartTavel(const ResourceAction& action) {
  restartRequests_.fetch_add(1);
  notice("restart requested by " + pluginName(action.pluginInfo));
  if (restartHandler_) restartHandler_();
  return Resource();
}

void SimTavel::setRestartHandler(std::function<void()> handler) {
  restartHandler_ = std::move(handler);
}

}  // namespace halvor::sim
