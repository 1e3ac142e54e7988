#include "sim/ResourceTree.h"

#include <mutex>

#include "tavelabi/Exceptions.h"
#include "tavelabi/GlobMatcher.h"

namespace halvor::sim {

using tavelabi::Resource;

std::uint64_t ResourceTree::nextIdentity() {
  static std::atomic<std::uint64_t> last{0};
  return last.fetch_add(1, std::memory_order_relaxed) + 1;
}

std::string ResourceTree::missingText(const std::string& path) { return "No resource at " + path; }

const Resource* ResourceTree::stored(std::string_view path) const {
  auto found = index_.find(path);
  return found == index_.end() ? nullptr : &found->second->second;
}

ResourceTree::Resources::iterator ResourceTree::storedEntry(std::string_view path) {
  auto found = index_.find(path);
  return found == index_.end() ? resources_.end() : found->second;
}

Resource ResourceTree::read(const std::string& path) const {
  std::shared_lock lock(mutex_);
  const Resource* found = stored(path);
  if (found == nullptr) throw tavelabi::NonExistentResourcePathException(missingText(path));
  return *found;
}

std::optional<Resource> ResourceTree::find(const std::string& path) const {
  std::shared_lock lock(mutex_);
  const Resource* found = stored(path);
  if (found == nullptr) return std::nullopt;
  return *found;
}

std::optional<tavelabi::ResourceValue> ResourceTree::findValue(const std::string& path,
                                                               const std::string& key) const {
  std::shared_lock lock(mutex_);
  const Resource* found = stored(path);
  if (found == nullptr) return std::nullopt;
  auto value = found->values.find(key);
  if (value == found->values.end()) return std::nullopt;
  return value->second;
}

std::optional<std::string> ResourceTree::findText(const std::string& path,
                                                  const std::string& key) const {
  std::shared_lock lock(mutex_);
  const Resource* found = stored(path);
  if (found == nullptr) return std::nullopt;
  auto value = found->values.find(key);
  if (value == found->values.end() ||
      value->second.getType() != tavelabi::ResourceValueType::STRING) {
    return std::nullopt;
  }
  return value->second.getStringValue();
}

Resource ResourceTree::create(const std::string& path, const Resource& resource,
                              const Observer& observer) {
  std::unique_lock lock(mutex_);
  auto [entry, created] = resources_.try_emplace(path);
  if (created) index_.emplace(entry->first, entry);
  entry->second = resource;
  generation_.fetch_add(1, std::memory_order_release);
  if (observer) observer(entry->second);
  return entry->second;
}

bool ResourceTree::createIfAbsent(const std::string& path, const Resource& resource,
                                  const Observer& observer) {
  std::unique_lock lock(mutex_);
  auto [entry, created] = resources_.try_emplace(path, resource);
  if (!created) return false;
  index_.emplace(entry->first, entry);
  generation_.fetch_add(1, std::memory_order_release);
  if (observer) observer(entry->second);
  return true;
}

Resource ResourceTree::update(const std::string& path, const Resource& resource,
                              const Observer& observer) {
  std::unique_lock lock(mutex_);
  auto found = storedEntry(path);
  if (found == resources_.end())
    throw tavelabi::NonExistentResourcePathException(missingText(path));
  for (const auto& [key, value] : resource.values) found->second.updateValue(key, value);
  generation_.fetch_add(1, std::memory_order_release);
  if (observer) observer(found->second);
  return found->second;
}

Resource ResourceTree::remove(const std::string& path) {
  std::unique_lock lock(mutex_);
  auto found = storedEntry(path);
  if (found == resources_.end())
    throw tavelabi::NonExistentResourcePathException(missingText(path));
  Resource removed = std::move(found->second);
  index_.erase(found->first);
  resources_.erase(found);
  generation_.fetch_add(1, std::memory_order_release);
  return removed;
}

std::vector<std::string> ResourceTree::list(const std::string& glob) const {
  tavelabi::GlobMatcher matcher(glob);
  std::vector<std::string> paths;
  std::shared_lock lock(mutex_);
  forEachCandidate(glob, [&](const std::string& path, const Resource&) {
    if (matcher.match(path)) paths.push_back(path);
  });
  return paths;
}

Resource ResourceTree::readGlob(const std::string& glob) const {
  tavelabi::GlobMatcher matcher(glob);
  Resource matches;
  std::shared_lock lock(mutex_);
  forEachCandidate(glob, [&](const std::string& path, const Resource& resource) {
    if (matcher.match(path)) matches.values.emplace(path, tavelabi::ResourceValue(resource.values));
  });
  return matches;
}

// A path can only match when it starts with the glob's text before its first star, and the
// paths that do are one run of the ordered map: the others are not even looked at.
template <typename Visit>
void ResourceTree::forEachCandidate(const std::string& glob, const Visit& visit) const {
  const std::string prefix = glob.substr(0, glob.find('*'));
  for (auto entry = resources_.lower_bound(prefix);
       entry != resources_.end() && entry->first.compare(0, prefix.size(), prefix) == 0; ++entry) {
    visit(entry->first, entry->second);
  }
}

std::size_t ResourceTree::size() const {
  std::shared_lock lock(mutex_);
  return resources_.size();
}

}  // namespace halvor::sim
