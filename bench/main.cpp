// The benchmark program: runs every row on Google Benchmark, both sides interleaved, and prints the
// medians side by side.
#include <benchmark/benchmark.h>

#include <climits>
#include <cstdio>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "compare.h"

#if defined(__GLIBC__)
#include <malloc.h>
#endif
#ifdef OMBRILO_HAVE_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/core/ocl.hpp>
#endif

namespace ombrilo::bench {

namespace {

struct Row {
  std::string name;
  double pixels;
  std::string peer_name;
  double ours = 0;  // processor time of one call in nanoseconds
  double peer = 0;
};

std::vector<Row>& Rows() {
  static std::vector<Row> rows;
  return rows;
}

void Register(const std::string& name, std::function<void()> call,
              std::function<void()> prepare = nullptr) {
  benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
    for (auto unused : state) {
      if (prepare) {
        state.PauseTiming();
        prepare();
        state.ResumeTiming();
      }
      call();
    }
  })->Unit(benchmark::kMillisecond);
}

// Google Benchmark shuffles the repetitions of all rows; this collects their medians.
class Table : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Aggregate || run.aggregate_name != "median") continue;
      medians_[run.run_name.function_name] = run.GetAdjustedCPUTime() * 1e6;
    }
  }

  void Finalize() override {
    std::printf("%-34s %9s  %-28s %9s %7s\n", "row", "ns/pixel", "peer", "ns/pixel", "ratio");
    for (Row& row : Rows()) {
      const auto ours = medians_.find(row.name + "|ombrilo");
      if (ours == medians_.end()) continue;
      row.ours = ours->second / row.pixels;
      std::printf("%-34s %9.4f", row.name.c_str(), row.ours);
      const auto peer = medians_.find(row.name + "|peer");
      if (peer != medians_.end()) {
        row.peer = peer->second / row.pixels;
        std::printf("  %-28s %9.4f %7.2f", row.peer_name.c_str(), row.peer, row.peer / row.ours);
      }
      std::printf("\n");
    }
  }

 private:
  std::map<std::string, double> medians_;
};

}  // namespace

void Compare(const std::string& row, double pixels, std::function<void()> ours,
             const std::string& peer_name, std::function<void()> peer) {
  ComparePrepared(row, pixels, nullptr, std::move(ours), peer_name, std::move(peer));
}

void ComparePrepared(const std::string& row, double pixels, std::function<void()> prepare,
                     std::function<void()> ours, const std::string& peer_name,
                     std::function<void()> peer) {
  Rows().push_back({row, pixels, peer_name});
  Register(row + "|ombrilo", std::move(ours), std::move(prepare));
  if (peer) Register(row + "|peer", std::move(peer));
}

}  // namespace ombrilo::bench

int main(int argc, char** argv) {
#if defined(__GLIBC__)
  // On both sides, blocks come from memory that the process already has: rows measure the work and
  // not how the kernel hands out pages.
  mallopt(M_MMAP_MAX, 0);
  mallopt(M_TRIM_THRESHOLD, INT_MAX);
  mallopt(M_TOP_PAD, 256 << 20);
#endif
  // Alternate both sides and keep the medians; arguments given by the user come last and win.
  std::vector<char*> arguments(argv, argv + 1);
  std::string defaults[] = {"--benchmark_repetitions=5", "--benchmark_min_time=0.1",
                            "--benchmark_enable_random_interleaving=true"};
  for (std::string& argument : defaults) arguments.push_back(argument.data());
  arguments.insert(arguments.end(), argv + 1, argv + argc);
  int count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 2;
#ifdef OMBRILO_HAVE_OPENCV
  cv::setNumThreads(1);
  cv::ocl::setUseOpenCL(false);
#endif
  ombrilo::bench::AddImageRows();
  ombrilo::bench::AddToneRows();
  ombrilo::bench::AddGeometryRows();
  ombrilo::bench::AddNeighbourhoodRows();
  ombrilo::bench::AddPageRows();
  ombrilo::bench::AddQuantizeRows();
  ombrilo::bench::Table table;
  benchmark::RunSpecifiedBenchmarks(&table);
  return 0;
}
