// What the person asked for: one piece of work at a time, off the thread of the windows.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "files/files.h"
#include "status_line.h"
#include "worker.h"

namespace ombview {

class Jobs {
 public:
  using Finish = std::function<void()>;
  using Work = std::function<Finish(Progress&, const omb::Remark&)>;
  struct Events {
    std::function<void()> wake;  // on the worker's thread
    // Work has failed, or something was not kept before the window goes on.
    std::function<void(const std::wstring& why)> complaint;
    std::function<void()> changed;  // work has begun, or is over
  };

  // Progress and remarks are shown in the status line.
  Jobs(StatusLine& status, Events events);

  // Starts work unless some is running. The function that it returns runs on the window's thread,
  // then `then` unless the work was cancelled. What it throws is shown to the person.
  void Start(const std::string& action, Work work, Finish then = {});
  // Work that writes a file, which is not to be abandoned.
  void StartSaving(Work work, Finish then);
  bool busy() const { return running_ != nullptr; }
  bool saving() const { return busy() && saving_; }
  // Reading, writing and printing stop soon; other work runs on, and its result is dropped.
  void Cancel();
  // Stops waiting for the work.
  void Abandon();

  // To be called periodically while it is busy, and after `wake`.
  void ShowProgress();
  void RunFollowups() { worker_.RunFollowups(); }
  bool HasFollowups() const { return worker_.busy(); }

 private:
  void End(const std::wstring& remark, const std::wstring& complaint = {});

  StatusLine& status_;
  Events events_;
  std::shared_ptr<Progress> running_;
  bool saving_ = false;
  std::string action_;
  std::chrono::steady_clock::time_point begun_;
  Worker worker_;  // the last member: its work ends before what it uses
};

}  // namespace ombview
