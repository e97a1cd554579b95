// The benchmark program: ombrilo_bench [--seconds=S] [--rows=NAME] [--save=FILE] [--report
// [--beside=FILE]] [WORD...] measures the rows whose names contain one of the words, with --rows by
// these row functions, and with --report writes docs/performance.md, beside what another run saved.
// With --sizes it measures images of five sizes instead.
#include <time.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "rows/row_functions.h"
#include "run.h"

#if defined(__GLIBC__)
#include <malloc.h>
#endif
#ifdef OMBRILO_HAVE_OPENCV
#include <opencv2/core/ocl.hpp>
#endif

namespace ombrilo::bench {

namespace {

std::vector<Row>& Rows() {
  static std::vector<Row> rows;
  return rows;
}

double Time(int calls, const std::function<void()>& prepare, const std::function<void()>& call) {
  double sum = 0;
  for (int i = 0; i < calls; ++i) {
    if (prepare) prepare();
    const double start = ProcessorTime();
    call();
    sum += ProcessorTime() - start;
  }
  return sum / calls;
}

double Median(std::vector<double> values) {
  if (values.empty()) return 0;
  const auto middle = values.begin() + static_cast<ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

void CopyThatMoves(double bytes) {
  constexpr size_t kMost = 64 << 20;
  static void* const from = std::memset(std::malloc(kMost), 1, kMost);
  static void* const to = std::memset(std::malloc(kMost), 2, kMost);
  std::memcpy(to, from, std::min(static_cast<size_t>(bytes / 2), kMost));
}

// All sides take turns; ratios are those of one turn.
void Measure(Row& row, double seconds) {
  const double give_up = ProcessorTime() + 10 * seconds * 1e9;
  if (row.check) row.check();
  if (row.start) row.start(row);
  double once = Time(1, row.prepare, row.ours);
  if (once < 1e9) {  // the first call is the slowest
    once = Time(1, row.prepare, row.ours);
    if (row.peer.call) row.peer.call();
  }
  const int calls = static_cast<int>(2e6 / once) + 1;
  std::vector<double> ours, ratios, shares;
  const double end = ProcessorTime() + seconds * 1e9;
  while (ours.empty() || ProcessorTime() < end || (ours.size() < 7 && ProcessorTime() < give_up)) {
    ours.push_back(Time(calls, row.prepare, row.ours));
    if (row.peer.call) ratios.push_back(Time(calls, nullptr, row.peer.call) / ours.back());
    if (row.bytes > 0) {
      shares.push_back(Time(calls, nullptr, [&] { CopyThatMoves(row.bytes); }) / ours.back());
    }
  }
  row.time = Median(std::move(ours)) / row.pixels;
  row.ratio = Median(std::move(ratios));
  row.share = Median(std::move(shares));
}

}  // namespace

void Add(Row row) { Rows().push_back(std::move(row)); }

double ProcessorTime() {
  timespec now;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

bool Chosen(const std::string& name, const std::vector<std::string>& words) {
  return words.empty() || std::any_of(words.begin(), words.end(), [&](const std::string& word) {
           return name.find(word) != std::string::npos;
         });
}

}  // namespace ombrilo::bench

int main(int argc, char** argv) {
  using namespace ombrilo;
  using namespace ombrilo::bench;
#if defined(__GLIBC__)
  // On both sides, blocks come from memory that the process already has: rows measure the work and
  // not how the kernel hands out pages.
  mallopt(M_MMAP_MAX, 0);
  mallopt(M_TRIM_THRESHOLD, INT_MAX);
  mallopt(M_TOP_PAD, 256 << 20);
#endif
#ifdef OMBRILO_HAVE_OPENCV
  cv::setNumThreads(1);
  cv::ocl::setUseOpenCL(false);
#endif
  bool report = false, sizes = false;
  std::string save, beside;
  double seconds = 0.3;
  std::vector<std::string> words;
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (argument == "--report") {
      report = true;
    } else if (argument == "--sizes") {
      sizes = true;
    } else if (argument.starts_with("--save=")) {
      save = argument.substr(7);
    } else if (argument.starts_with("--beside=")) {
      beside = argument.substr(9);
    } else if (argument.starts_with("--seconds=")) {
      seconds = std::atof(argument.c_str() + argument.find('=') + 1);
    } else if (argument.starts_with("--rows=")) {
      const simd::RowFunctions* const* level = simd::Supported();
      while (*level != nullptr && argument.substr(7) != (*level)->name) ++level;
      if (*level == nullptr) return std::fprintf(stderr, "No such row functions here\n"), 1;
      simd::Use(*level);
    } else {
      words.push_back(argument);
    }
  }
  if (sizes) return MeasureSizes(words, seconds) ? 0 : 1;
  AddImageRows();
  AddToneRows();
  AddGeometryRows();
  AddNeighbourhoodRows();
  AddPageRows();
  AddQuantizeRows();

  std::printf("%-36s %9s  %-34s %9s %7s %8s\n", "row", "ns/pixel", "peer", "ns/pixel", "ratio",
              "memcpy");
  std::vector<Row> measured;
  for (Row& row : Rows()) {
    if (!Chosen(row.name, words)) continue;
    Measure(row, seconds);
    std::printf("%-36s %9.4f  ", row.name.c_str(), row.time);
    if (row.ratio > 0) {
      std::printf("%-34s %9.4f %7.2f", row.peer.name.c_str(), row.time * row.ratio, row.ratio);
    } else {
      std::printf("%-34s %9s %7s", "", "", "");
    }
    if (row.share > 0) std::printf(" %6.0f %%", 100 * row.share);
    std::printf("\n");
    std::fflush(stdout);
    measured.push_back(std::exchange(row, {}));
    measured.back().Forget();
  }
  if (!save.empty() && !SaveRun(measured, save)) return 1;
  return report && !WriteReport(std::move(measured), beside) ? 1 : 0;
}
