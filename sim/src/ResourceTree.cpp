#include "sim/ResourceTree.h"

#include <mutex>

#include "tavelabi/Exceptions.h"
#include "tavelabi/GlobMatcher.h"

namespace halvor::sim {

using tavelabi::Resource;

std::string ResourceTree::missingText(const std::string& path) { return "No resource at " + path; }

Resource ResourceTree::read(const std::string& path) const {
  std::shared_lock lock(mutex_);
  auto found = resources_.find(path);
  if (found == resources_.end())
    throw tavelabi::NonExistentResourcePathException(missingText(path));
  return found->second;
}

std::optional<Resource> ResourceTree::find(const std::string& path) const {
  std::shared_lock lock(mutex_);
  auto found = resources_.find(path);
  if (found == resources_.end()) return std::nullopt;
  return found->second;
}

std::optional<tavelabi::ResourceValue> ResourceTree::findValue(const std::string& path,
                                                               const std::string& key) const {
  std::shared_lock lock(mutex_);
  auto found = resources_.find(path);
  if (found == resources_.end()) return std::nullopt;
  auto value = found->second.values.find(key);
  if (value == found->second.values.end()) return std::nullopt;
  return value->second;
}

Resource ResourceTree::create(const std::string& path, const Resource& resource,
                              const Observer& observer) {
  std::unique_lock lock(mutex_);
  Resource& stored = resources_[path];
  stored = resource;
  if (observer) observer(stored);
  return stored;
}

bool ResourceTree::createIfAbsent(const std::string& path, const Resource& resource,
                                  const Observer& observer) {
  std::unique_lock lock(mutex_);
  auto [stored, created] = resources_.try_emplace(path, resource);
  if (created && observer) observer(stored->second);
  return created;
}

Resource ResourceTree::update(const std::string& path, const Resource& resource,
                              const Observer& observer) {
  std::unique_lock lock(mutex_);
  auto found = resources_.find(path);
  if (found == resources_.end())
    throw tavelabi::NonExistentResourcePathException(missingText(path));
  for (const auto& [key, value] : resource.values) found->second.updateValue(key, value);
  if (observer) observer(found->second);
  return found->second;
}

Resource ResourceTree::remove(const std::string& path) {
  std::unique_lock lock(mutex_);
  auto found = resources_.find(path);
  if (found == resources_.end())
    throw tavelabi::NonExistentResourcePathException(missingText(path));
  Resource removed = std::move(found->second);
  resources_.erase(found);
  return removed;
}

std::vector<std::string> ResourceTree::list(const std::string& glob) const {
  tavelabi::GlobMatcher matcher(glob);
  std::vector<std::string> paths;
  std::shared_lock lock(mutex_);
  for (const auto& entry : resources_) {
    if (matcher.match(entry.first)) paths.push_back(entry.first);
  }
  return paths;
}

Resource ResourceTree::readGlob(const std::string& glob) const {
  tavelabi::GlobMatcher matcher(glob);
  Resource matches;
  std::shared_lock lock(mutex_);
  for (const auto& [path, resource] : resources_) {
    if (matcher.match(path)) matches.values.emplace(path, tavelabi::ResourceValue(resource.values));
  }
  return matches;
}

std::size_t ResourceTree::size() const {
  std::shared_lock lock(mutex_);
  return resources_.size();
}

}  // namespace halvor::sim
