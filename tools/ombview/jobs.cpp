#include "jobs.h"

#include <new>
#include <stdexcept>
#include <utility>

#include "wide.h"

namespace ombview {

namespace {

constexpr auto kPatience = std::chrono::milliseconds(300);  // until progress is shown

std::wstring TimeOf(std::chrono::duration<double, std::milli> time) {
  wchar_t text[40];
  const double ms = time.count();
  swprintf(text, ARRAYSIZE(text), ms < 1000 ? L"%.1f ms" : L"%.1f s", ms < 1000 ? ms : ms / 1000);
  return text;
}

}  // namespace

Jobs::Jobs(StatusLine& status, Events events)
    : status_(status), events_(std::move(events)), worker_(events_.wake) {}

void Jobs::Start(const std::string& action, Work work, Finish then) {
  if (busy()) return;
  action_ = action;
  saving_ = false;
  begun_ = std::chrono::steady_clock::now();
  running_ = worker_.Start(0, [=, this, begun = begun_](Progress& progress) -> Worker::Followup {
    std::wstring complaint;
    try {
      std::string remarks;
      const Finish finish =
          work(progress, [&](const std::string& remark) { remarks += " · " + remark; });
      progress.Report(1);
      const std::wstring remark =
          Wide(action) + L": " + TimeOf(std::chrono::steady_clock::now() - begun) + Wide(remarks);
      return [=, this] {
        const bool go_on = !running_->cancelled();
        finish();
        End(remark);
        if (!then || !go_on) return;
        // What comes next would take the remarks off the status line before they can be read.
        if (!remarks.empty()) events_.complaint(remark);
        then();
      };
    } catch (const Cancelled&) {
      return [=, this] { End(Wide(action) + L": stopped"); };
    } catch (const std::bad_alloc&) {
      complaint = L"Memory ran out.";
    } catch (const std::exception& error) {
      complaint = Wide(action + ": " + error.what());
    }
    return [=, this] { End(L"", complaint); };
  });
  events_.changed();
}

void Jobs::StartSaving(Work work, Finish then) {
  if (busy()) return;
  Start("Saving", std::move(work), std::move(then));
  saving_ = true;
}

void Jobs::End(const std::wstring& remark, const std::wstring& complaint) {
  running_.reset();
  status_.SetProgress(-1);
  status_.Set(StatusLine::kRemark, remark);
  if (!complaint.empty()) events_.complaint(complaint);
  events_.changed();
}

void Jobs::Cancel() {
  if (!busy()) return;
  running_->Cancel();
  ShowProgress();
}

void Jobs::Abandon() {
  if (!busy()) return;
  running_->Cancel();
  worker_.Drop(0);
  End(Wide(action_) + L": stopped");
}

void Jobs::ShowProgress() {
  if (!busy() || std::chrono::steady_clock::now() - begun_ < kPatience) return;
  const double share = running_->share();
  std::wstring text = Wide(action_) + L"…";
  if (share > 0) text += L" " + std::to_wstring(static_cast<int>(100 * share)) + L" %";
  text += running_->cancelled() ? L"  is being stopped" : L"  Esc stops it";
  status_.Set(StatusLine::kRemark, text);
  status_.SetProgress(share);
}

}  // namespace ombview
