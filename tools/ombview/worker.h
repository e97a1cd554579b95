// A thread that computes so that the thread of the windows does not have to. Portable.
#pragma once

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace ombview {

// How a piece of work tells its progress and learns that it was cancelled.
class Progress {
 public:
  // From 0 to 1. Throws Cancelled once the work is not wanted any more.
  void Report(double share);
  double share() const { return share_; }
  void Cancel() { cancelled_ = true; }
  bool cancelled() const { return cancelled_; }

 private:
  std::atomic<double> share_ = 0;
  std::atomic<bool> cancelled_ = false;
};

struct Cancelled {};

// Work is done on the worker's thread; what follows from it is a function that the owner runs on
// its own.
class Worker {
 public:
  using Followup = std::function<void()>;
  using Work = std::function<Followup(Progress&)>;

  // `wake` is called on the worker's thread whenever there is something for RunFollowups().
  explicit Worker(std::function<void()> wake);
  // Waits for the work at hand; what has not begun is dropped.
  ~Worker();
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;

  // Pieces of work of one slot replace each other: of those that have not begun only the newest is
  // done, and what follows from an older one is dropped. Lower slots come first.
  std::shared_ptr<Progress> Start(int slot, Work work);
  // Nothing of this slot is wanted any more.
  void Drop(int slot);
  bool busy() const;
  // On the owner's thread: what follows from the work that is done.
  void RunFollowups();

 private:
  struct Task {
    Work work;
    std::shared_ptr<Progress> progress;
    uint64_t number;
  };
  struct Done {
    int slot;
    uint64_t number;
    Followup followup;
  };

  void Run();

  std::function<void()> wake_;
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::map<int, Task> waiting_;
  std::map<int, uint64_t> newest_;
  std::map<int, std::shared_ptr<Progress>> running_;
  std::deque<Done> done_;
  uint64_t count_ = 0;
  bool ending_ = false;
  std::thread thread_;
};

}  // namespace ombview
