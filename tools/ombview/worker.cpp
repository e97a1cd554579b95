#include "worker.h"

#include <utility>

namespace ombview {

void Progress::Report(double share) {
  if (cancelled_) throw Cancelled();
  share_ = share;
}

Worker::Worker(std::function<void()> wake) : wake_(std::move(wake)), thread_([this] { Run(); }) {}

Worker::~Worker() {
  {
    const std::lock_guard lock(mutex_);
    ending_ = true;
    waiting_.clear();
    for (auto& [slot, progress] : running_) progress->Cancel();
  }
  changed_.notify_all();
  thread_.join();
}

std::shared_ptr<Progress> Worker::Start(int slot, Work work) {
  auto progress = std::make_shared<Progress>();
  {
    const std::lock_guard lock(mutex_);
    newest_[slot] = ++count_;
    waiting_.insert_or_assign(slot, Task{std::move(work), progress, count_});
  }
  changed_.notify_all();
  return progress;
}

void Worker::Drop(int slot) {
  const std::lock_guard lock(mutex_);
  newest_[slot] = ++count_;
  waiting_.erase(slot);
}

bool Worker::busy() const {
  const std::lock_guard lock(mutex_);
  return !waiting_.empty() || !running_.empty() || !done_.empty();
}

void Worker::RunFollowups() {
  for (;;) {
    Followup followup;
    {
      const std::lock_guard lock(mutex_);
      if (done_.empty()) return;
      if (done_.front().number == newest_[done_.front().slot]) {
        followup = std::move(done_.front().followup);
      }
      done_.pop_front();
    }
    if (followup) followup();
  }
}

void Worker::Run() {
  std::unique_lock lock(mutex_);
  for (;;) {
    changed_.wait(lock, [this] { return ending_ || !waiting_.empty(); });
    if (ending_) return;
    auto node = waiting_.extract(waiting_.begin());
    const int slot = node.key();
    Task task = std::move(node.mapped());
    running_[slot] = task.progress;
    lock.unlock();
    Followup followup = task.work(*task.progress);
    task.work = nullptr;  // what it held is released here, on this thread
    lock.lock();
    running_.erase(slot);
    done_.push_back({slot, task.number, std::move(followup)});
    lock.unlock();
    wake_();
    lock.lock();
  }
}

}  // namespace ombview
