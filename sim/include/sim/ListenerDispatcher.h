#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <thread>
#include <vector>

#include "tavelabi/IPluginInfo.h"
#include "tavelabi/IResourceListener.h"
#include "tavelabi/ResourceAction.h"

namespace halvor::sim {

// The host's listeners. Create and Update actions are queued and handed to the listeners on
// one dispatcher thread, in the order in which they were queued. Command listeners are called
// at once on the caller's thread. After remove() returns, a listener is never called again.
class ListenerDispatcher {
 public:
  ListenerDispatcher();
  ~ListenerDispatcher();

  ListenerDispatcher(const ListenerDispatcher&) = delete;
  ListenerDispatcher& operator=(const ListenerDispatcher&) = delete;

  void add(tavelabi::IPluginInfo* plugin, tavelabi::IResourceListener* listener);
  // Waits for a call of the listener that is in progress on another thread. A listener that
  // removes itself (or another listener that this thread is calling) does not wait for itself.
  void remove(tavelabi::IPluginInfo* plugin, tavelabi::IResourceListener* listener);

  // Queues a copy of the action for the dispatcher thread.
  void enqueue(const tavelabi::ResourceAction& action);
  // Calls the Command listeners of the action's path on this thread; returns how many were
  // called. An exception from a listener goes to the caller.
  std::size_t callCommandListeners(tavelabi::ResourceAction& action);

  // Blocks until every action queued so far has been dispatched. On the dispatcher thread
  // itself it returns at once.
  void waitIdle();
  // Stops the dispatcher thread; queued actions that were not dispatched are dropped.
  void stop();

  std::size_t listenerCount() const;
  std::uint64_t dispatchedCount() const;

 private:
  struct Slot {
    tavelabi::IPluginInfo* plugin;
    tavelabi::IResourceListener* listener;
    // Held shared for each call, exclusively by remove(): remove() waits out calls in progress.
    std::shared_mutex callMutex;
    std::atomic<bool> removed{false};
  };
  using SlotPtr = std::shared_ptr<Slot>;
  // Command listeners' exceptions go to the caller; dispatched ones are printed.
  enum class ErrorHandling { Propagate, Report };

  std::vector<SlotPtr> matchingSlots(const tavelabi::ResourceAction& action) const;
  // Calls one listener unless it was removed.
  static void callSlot(Slot& slot, tavelabi::ResourceAction& action, ErrorHandling errors);
  static void notify(Slot& slot, tavelabi::ResourceAction& action, ErrorHandling errors);
  void dispatchOne(const tavelabi::ResourceAction& action);
  void run();

  mutable std::shared_mutex slotsMutex_;
  std::vector<SlotPtr> slots_;

  std::mutex queueMutex_;
  std::condition_variable queueChanged_;
  std::deque<tavelabi::ResourceAction> queue_;
  bool stopping_ = false;
  bool dispatching_ = false;
  std::uint64_t enqueued_ = 0;
  std::atomic<std::uint64_t> dispatched_{0};
  std::thread thread_;
};

}  // namespace halvor::sim
