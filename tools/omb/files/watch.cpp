#include "files/codec.h"

namespace omb {

namespace {

thread_local Watch watch_of_thread;

}  // namespace

Watching::Watching(Watch watch) { watch_of_thread = std::move(watch); }

Watching::~Watching() { watch_of_thread = nullptr; }

void ReportWait() {
  if (watch_of_thread) watch_of_thread(0);
}

void ReportRow(int64_t row, int64_t rows) {
  constexpr int64_t kReports = 200;
  if (!watch_of_thread || row * kReports / rows == (row + 1) * kReports / rows) return;
  watch_of_thread(static_cast<double>(row + 1) / static_cast<double>(rows));
}

}  // namespace omb
