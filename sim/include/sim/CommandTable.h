#pragma once

#include <functional>
#include <map>
#include <optional>
#include <shared_mutex>
#include <stdexcept>
#include <string>
#include <vector>

#include "tavelabi/Resource.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::sim {

// Runs one command: may read the action's payload, answers the resource that the caller gets
// back (and that is written into the action), or throws like any host operation.
using CommandHandler = std::function<tavelabi::Resource(tavelabi::ResourceAction& action)>;

struct Command {
  std::string path;
  CommandHandler handler;
};

// A second registration of a command path.
class DuplicateCommandError : public std::logic_error {
 public:
  using std::logic_error::logic_error;
};

// The host's commands: path -> handler, each with the name of its owner ("host" or a model).
// Safe for concurrent use; handlers are copied out and run without the table's lock, so that a
// handler may run commands itself.
class CommandTable {
 public:
  // Adds every command of `owner`, or none of them: DuplicateCommandError when a path is already
  // served or given twice.
  void add(const std::vector<Command>& commands, const std::string& owner);
  std::optional<CommandHandler> find(const std::string& path) const;
  // The owner of the command at the path, empty when there is none.
  std::string ownerOf(const std::string& path) const;
  std::vector<std::string> paths() const;

 private:
  struct Entry {
    CommandHandler handler;
    std::string owner;
  };

  mutable std::shared_mutex mutex_;
  std::map<std::string, Entry> entries_;
};

}  // namespace halvor::sim
