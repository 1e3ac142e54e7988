#include "sim/CommandTable.h"

#include <mutex>
#include <set>

namespace halvor::sim {

void CommandTable::add(const std::vector<Command>& commands, const std::string& owner) {
  std::unique_lock lock(mutex_);
  // Checked in full before anything is added, so that a refused owner leaves no command behind.
  std::set<std::string> seen;
  for (const Command& command : commands) {
    auto found = entries_.find(command.path);
    if (found != entries_.end()) {
      throw DuplicateCommandError("command " + command.path + " of " + owner +
                                  " is already served by " + found->second.owner);
    }
    if (!seen.insert(command.path).second) {
      throw DuplicateCommandError("command " + command.path + " is given twice by " + owner);
    }
  }
  for (const Command& command : commands) entries_[command.path] = {command.handler, owner};
}

std::optional<CommandHandler> CommandTable::find(const std::string& path) const {
  std::shared_lock lock(mutex_);
  auto found = entries_.find(path);
  if (found == entries_.end()) return std::nullopt;
  return found->second.handler;
}

std::string CommandTable::ownerOf(const std::string& path) const {
  std::shared_lock lock(mutex_);
  auto found = entries_.find(path);
  return found == entries_.end() ? std::string() : found->second.owner;
}

std::vector<std::string> CommandTable::paths() const {
  std::shared_lock lock(mutex_);
  std::vector<std::string> paths;
  paths.reserve(entries_.size());
  for (const auto& entry : entries_) paths.push_back(entry.first);
  return paths;
}

}  // namespace halvor::sim
