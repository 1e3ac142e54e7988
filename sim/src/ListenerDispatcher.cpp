#include "sim/ListenerDispatcher.h"

#include <algorithm>
#include <chrono>
#include <exception>

#include "sim/Console.h"
#include "tavelabi/GlobMatcher.h"

namespace halvor::sim {

using tavelabi::CCRUD;
using tavelabi::ResourceAction;

namespace {

// The listener slots that this thread is calling right now. A listener that removes itself
// (directly or through a nested call) must not wait for its own call to end.
thread_local std::vector<const void*> slotsInCall;

bool isInCall(const void* slot) {
  return std::find(slotsInCall.begin(), slotsInCall.end(), slot) != slotsInCall.end();
}

class InCallMark {
 public:
  explicit InCallMark(const void* slot) { slotsInCall.push_back(slot); }
  ~InCallMark() { slotsInCall.pop_back(); }
  InCallMark(const InCallMark&) = delete;
  InCallMark& operator=(const InCallMark&) = delete;
};

thread_local bool onDispatcherThread = false;

tavelabi::TimePoint steadyNow() {
  return std::chrono::time_point_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now());
}

std::string describe(tavelabi::IResourceListener& listener) {
  try {
    return static_cast<std::string>(listener);
  } catch (...) {
    return "listener on " + listener.getPattern();
  }
}

}  // namespace

ListenerDispatcher::ListenerDispatcher() : thread_([this] { run(); }) {}

ListenerDispatcher::~ListenerDispatcher() { stop(); }

void ListenerDispatcher::add(tavelabi::IPluginInfo* plugin, tavelabi::IResourceListener* listener) {
  if (listener == nullptr) return;
  auto slot = std::make_shared<Slot>();
  slot->plugin = plugin;
  slot->listener = listener;
  std::unique_lock lock(slotsMutex_);
  slots_.push_back(std::move(slot));
}

void ListenerDispatcher::remove(tavelabi::IPluginInfo* /*plugin*/,
                                tavelabi::IResourceListener* listener) {
  std::vector<SlotPtr> removed;
  {
    std::unique_lock lock(slotsMutex_);
    for (auto it = slots_.begin(); it != slots_.end();) {
      if ((*it)->listener == listener) {
        removed.push_back(*it);
        it = slots_.erase(it);
      } else {
        ++it;
      }
    }
  }
  for (const SlotPtr& slot : removed) {
    slot->removed.store(true);
    if (isInCall(slot.get())) continue;
    // Waits for calls in progress on other threads; later calls see `removed` and skip.
    std::unique_lock barrier(slot->callMutex);
  }
}

std::vector<ListenerDispatcher::SlotPtr> ListenerDispatcher::matchingSlots(
    const ResourceAction& action) const {
  std::vector<SlotPtr> matching;
  std::shared_lock lock(slotsMutex_);
  for (const SlotPtr& slot : slots_) {
    if (!slot->listener->hasAction(action.action)) continue;
    std::string pattern = slot->listener->getPattern();
    if (!tavelabi::GlobMatcher::globMatch(pattern.c_str(), action.path.c_str())) continue;
    matching.push_back(slot);
  }
  return matching;
}

void ListenerDispatcher::callSlot(Slot& slot, ResourceAction& action, ErrorHandling errors) {
  if (isInCall(&slot)) {
    // A nested call on the same thread already holds the slot.
    if (!slot.removed.load()) notify(slot, action, errors);
    return;
  }
  std::shared_lock callLock(slot.callMutex);
  if (slot.removed.load()) return;
  InCallMark mark(&slot);
  notify(slot, action, errors);
}

// Reports a failure while the slot is still held: once it is released the listener may be
// removed and deleted at any moment.
void ListenerDispatcher::notify(Slot& slot, ResourceAction& action, ErrorHandling errors) {
  if (errors == ErrorHandling::Propagate) {
    slot.listener->notifyAction(steadyNow(), action);
    return;
  }
  std::string failure;
  try {
    slot.listener->notifyAction(steadyNow(), action);
    return;
  } catch (const std::exception& error) {
    failure = error.what();
  } catch (...) {
    failure = "unknown exception";
  }
  Console::errorLine("[listener] " + describe(*slot.listener) + " failed on " +
                     tavelabi::toString(action.action) + " " + action.path + ": " + failure);
}

std::size_t ListenerDispatcher::callCommandListeners(ResourceAction& action) {
  std::vector<SlotPtr> matching = matchingSlots(action);
  for (const SlotPtr& slot : matching) callSlot(*slot, action, ErrorHandling::Propagate);
  return matching.size();
}

void ListenerDispatcher::enqueue(const ResourceAction& action) {
  ResourceAction copy = action;
  copy.onSuccess = nullptr;
  copy.onFailure = nullptr;
  {
    std::lock_guard lock(queueMutex_);
    if (stopping_) return;
    queue_.push_back(std::move(copy));
    ++enqueued_;
  }
  queueChanged_.notify_all();
}

void ListenerDispatcher::dispatchOne(const ResourceAction& action) {
  for (const SlotPtr& slot : matchingSlots(action)) {
    // Each listener gets its own copy: a listener may change the action it is handed.
    ResourceAction copy = action;
    callSlot(*slot, copy, ErrorHandling::Report);
  }
}

void ListenerDispatcher::run() {
  onDispatcherThread = true;
  std::unique_lock lock(queueMutex_);
  while (true) {
    queueChanged_.wait(lock, [this] { return stopping_ || !queue_.empty(); });
    if (stopping_) return;
    ResourceAction action = std::move(queue_.front());
    queue_.pop_front();
    dispatching_ = true;
    lock.unlock();
    dispatchOne(action);
    dispatched_.fetch_add(1);
    lock.lock();
    dispatching_ = false;
    queueChanged_.notify_all();
  }
}

void ListenerDispatcher::waitIdle() {
  if (onDispatcherThread) return;
  std::unique_lock lock(queueMutex_);
  std::uint64_t target = enqueued_;
  queueChanged_.wait(lock, [&] { return stopping_ || dispatched_.load() >= target; });
}

void ListenerDispatcher::stop() {
  {
    std::lock_guard lock(queueMutex_);
    if (stopping_ && !thread_.joinable()) return;
    stopping_ = true;
    queue_.clear();
  }
  queueChanged_.notify_all();
  if (thread_.joinable() && thread_.get_id() != std::this_thread::get_id()) thread_.join();
}

std::size_t ListenerDispatcher::listenerCount() const {
  std::shared_lock lock(slotsMutex_);
  return slots_.size();
}

std::uint64_t ListenerDispatcher::dispatchedCount() const { return dispatched_.load(); }

}  // namespace halvor::sim
