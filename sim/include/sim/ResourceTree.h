#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "tavelabi/Resource.h"

namespace halvor::sim {

// The host's resources: an ordered map from path to Resource. Readers run in parallel; a
// writer holds the tree alone. A writer's observer is called while the write lock is still
// held, so that observers see the changes in exactly the order in which they were applied.
class ResourceTree {
 public:
  using Observer = std::function<void(const tavelabi::Resource& stored)>;

  // The stored resource; NonExistentResourcePathException when there is none.
  tavelabi::Resource read(const std::string& path) const;
  std::optional<tavelabi::Resource> find(const std::string& path) const;
  // One value of the resource at `path`, without copying the rest of it.
  std::optional<tavelabi::ResourceValue> findValue(const std::string& path,
                                                   const std::string& key) const;
  // The text under the key of the resource at `path`; nothing when there is no such resource,
  // no such key, or the value is not a STRING.
  std::optional<std::string> findText(const std::string& path, const std::string& key) const;
  // Stores the resource at the path, replacing an earlier one; returns what is stored.
  tavelabi::Resource create(const std::string& path, const tavelabi::Resource& resource,
                            const Observer& observer = {});
  // Stores the resource only when there is none at the path; true when it did.
  bool createIfAbsent(const std::string& path, const tavelabi::Resource& resource,
                      const Observer& observer = {});
  // Merges the given keys into the resource at the path; returns the result.
  // NonExistentResourcePathException when there is none.
  tavelabi::Resource update(const std::string& path, const tavelabi::Resource& resource,
                            const Observer& observer = {});
  // Removes the resource and returns it; NonExistentResourcePathException when there is none.
  tavelabi::Resource remove(const std::string& path);
  // The paths that match the glob, in path order.
  std::vector<std::string> list(const std::string& glob) const;
  // One resource that maps each path matching the glob to the values of its resource (a
  // MAP_VALUE), in path order; no values when nothing matches.
  tavelabi::Resource readGlob(const std::string& glob) const;
  std::size_t size() const;

  static std::string missingText(const std::string& path);

  // A number that grows with every write, and one that no other tree of the process has: a
  // reader that keeps something it took from the tree knows by them whether it may have changed.
  // A write that returned before generation() is read has already counted.
  std::uint64_t generation() const { return generation_.load(std::memory_order_acquire); }
  std::uint64_t identity() const { return identity_; }

 private:
  // Calls visit(path, resource) for every stored path that may match glob, in path order; the
  // caller holds the lock.
  using Resources = std::map<std::string, tavelabi::Resource>;

  template <typename Visit>
  void forEachCandidate(const std::string& glob, const Visit& visit) const;
  // The stored resource at `path`, or nullptr; the caller holds the lock.
  const tavelabi::Resource* stored(std::string_view path) const;
  Resources::iterator storedEntry(std::string_view path);

  mutable std::shared_mutex mutex_;
  // Ordered, for the globs' runs of paths; the hash index answers a read of one path with one
  // hash and one compare instead of a dozen compares of long paths that share their start.
  // Its keys are views of the map's own keys, whose nodes never move.
  Resources resources_;
  std::unordered_map<std::string_view, Resources::iterator> index_;
  // Counted under the write lock, before it is released.
  std::atomic<std::uint64_t> generation_{0};
  const std::uint64_t identity_ = nextIdentity();

  static std::uint64_t nextIdentity();
};

}  // namespace halvor::sim
