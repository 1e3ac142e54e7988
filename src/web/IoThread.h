#pragma once

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include "ServerState.h"
#include "ThreadContext.h"

namespace halvor::kelo::web {

// A connection the I/O thread looks after: idle checks once a second, closing at shutdown.
class TrackedConnection {
 public:
  virtual ~TrackedConnection() = default;
  // `now` in seconds of the thread's clock (IoThread::ticks()).
  virtual void closeIfIdle(std::uint64_t now) = 0;
  virtual void closeForShutdown() = 0;
};

// One I/O thread with its own io_context (concurrency hint 1). Connections pinned to it run
// all their handlers here, so they need no strand; other threads reach them with post().
// Connections keep their IoThread alive, so the io_context outlives every socket made on it.
class IoThread : public std::enable_shared_from_this<IoThread> {
 public:
  explicit IoThread(ServerStatePtr state);
  ~IoThread();

  boost::asio::io_context& context() { return *context_; }
  void start();
  bool isCurrent() const { return ThreadContext::currentIoThread() == this; }

  // From any thread. Dropped (destroyed on the caller's thread) once the thread has finished.
  template <class F>
  void post(F&& function) {
    std::lock_guard lock(postMutex_);
    if (!accepting_) return;
    boost::asio::post(*context_, std::forward<F>(function));
  }

  // On this thread only.
  void track(std::weak_ptr<TrackedConnection> connection);
  std::uint64_t ticks() const { return ticks_; }

  // From any thread: closes every tracked connection and lets the loop end once idle.
  void beginStop();
  // Waits for the thread (at most `graceMillis`, then stops the loop), runs what is left on
  // the caller's thread, and refuses later posts.
  void finish(int graceMillis);
  // From another thread: holds the thread between two handlers until resume(), so that the
  // caller may change what handlers rely on. Returns once the thread is held, or at once when it
  // has ended. Posts made meanwhile queue up and run after resume().
  void park();
  void resume();

 private:
  void scheduleTick();
  void onTick();
  void closeAll();
  void stayParked();

  ServerStatePtr state_;
  std::optional<boost::asio::io_context> context_;
  std::optional<boost::asio::executor_work_guard<boost::asio::io_context::executor_type>> work_;
  boost::asio::steady_timer tickTimer_;
  std::thread thread_;
  std::mutex postMutex_;
  bool accepting_ = true;
  bool stopping_ = false;
  std::uint64_t ticks_ = 0;
  std::vector<std::weak_ptr<TrackedConnection>> connections_;
  // Guard done_, parkRequested_ and parked_; the signal is shared by all I/O threads.
  std::mutex doneMutex_;
  bool done_ = false;
  bool parkRequested_ = false;
  bool parked_ = false;
};

using IoThreadPtr = std::shared_ptr<IoThread>;

}  // namespace halvor::kelo::web
