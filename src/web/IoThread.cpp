#include "IoThread.h"

#include <chrono>
#include <condition_variable>

#include "kelo/web/Log.h"

namespace halvor::kelo::web {
namespace {

std::condition_variable& doneSignal() {
  static std::condition_variable signal;
  return signal;
}

}  // namespace

IoThread::IoThread(ServerStatePtr state)
    : state_(std::move(state)), context_(std::in_place, 1), tickTimer_(*context_) {
  work_.emplace(context_->get_executor());
}

IoThread::~IoThread() {
  if (thread_.joinable()) {
    context_->stop();
    thread_.join();
  }
}

void IoThread::start() {
  scheduleTick();
  thread_ = std::thread([this] {
    ThreadContext::enter(this, state_.get());
    try {
      context_->run();
    } catch (const std::exception& error) {
      logLine(kError, std::string("I/O thread stopped by an exception: ") + error.what());
    }
    ThreadContext::leave();
    {
      std::lock_guard lock(doneMutex_);
      done_ = true;
    }
    doneSignal().notify_all();
  });
}

void IoThread::track(std::weak_ptr<TrackedConnection> connection) {
  connections_.push_back(std::move(connection));
}

void IoThread::scheduleTick() {
  tickTimer_.expires_after(std::chrono::seconds(1));
  tickTimer_.async_wait([this](const boost::system::error_code& ec) {
    if (!ec) onTick();
  });
}

void IoThread::onTick() {
  ++ticks_;
  std::size_t kept = 0;
  for (std::size_t i = 0; i < connections_.size(); ++i) {
    auto connection = connections_[i].lock();
    if (!connection) continue;
    connections_[kept++] = connections_[i];
    connection->closeIfIdle(ticks_);
  }
  connections_.resize(kept);
  if (!stopping_) scheduleTick();
}

void IoThread::closeAll() {
  // Closing may destroy connections and so shrink nothing here: take the list first.
  auto connections = std::move(connections_);
  connections_.clear();
  for (auto& weak : connections) {
    if (auto connection = weak.lock()) connection->closeForShutdown();
  }
}

void IoThread::beginStop() {
  post([self = shared_from_this()] {
    self->stopping_ = true;
    self->tickTimer_.cancel();
    self->closeAll();
    self->work_.reset();
  });
}

void IoThread::finish(int graceMillis) {
  if (thread_.joinable()) {
    std::unique_lock lock(doneMutex_);
    if (!doneSignal().wait_for(lock, std::chrono::milliseconds(graceMillis),
                               [this] { return done_; })) {
      context_->stop();
    }
    lock.unlock();
    thread_.join();
  }
  // Handlers still queued hold connections; run them here so that they end and free their
  // sockets while the io_context is alive.
  ThreadContext::enter(this, state_.get());
  if (!stopping_) {
    stopping_ = true;
    tickTimer_.cancel();
    closeAll();
    work_.reset();
  }
  context_->restart();
  while (context_->poll() > 0) {
  }
  {
    std::lock_guard lock(postMutex_);
    accepting_ = false;
  }
  context_->restart();
  while (context_->poll() > 0) {
  }
  ThreadContext::leave();
}

void IoThread::park() {
  {
    std::lock_guard lock(doneMutex_);
    if (!thread_.joinable() || done_) return;
    parkRequested_ = true;
  }
  post([self = shared_from_this()] { self->stayParked(); });
  std::unique_lock lock(doneMutex_);
  doneSignal().wait(lock, [this] { return parked_ || done_; });
}

void IoThread::stayParked() {
  std::unique_lock lock(doneMutex_);
  parked_ = true;
  doneSignal().notify_all();
  doneSignal().wait(lock, [this] { return !parkRequested_; });
  parked_ = false;
}

void IoThread::resume() {
  {
    std::lock_guard lock(doneMutex_);
    parkRequested_ = false;
  }
  doneSignal().notify_all();
}

}  // namespace halvor::kelo::web
