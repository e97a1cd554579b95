// Calls on several threads do not affect each other: together they give what each gives alone. The
// thread sanitizer runs this file by itself.
#include <gtest/gtest.h>

#include <array>
#include <thread>

#include "rows/row_functions.h"
#include "support/every_export.h"

namespace ombrilo::test {
namespace {

constexpr size_t kThreads = 4;

// The checksums of all exports, on images of this thread's own.
std::vector<uint64_t> RunAll(int bits, size_t thread) {
  const auto seed = static_cast<uint32_t>(thread);
  ImageBuilder builder(bits, 120 + static_cast<int>(thread), 60);
  if (bits <= 8) builder.Colors(VariedColors(1 << bits, seed));
  const TestImage image = builder.Pixels(Noise(1u << std::min(bits, 24), 9 + seed)).Build();
  std::array<uint8_t, 400> parameters;
  parameters.fill(static_cast<uint8_t>(3 + thread));
  const auto exports = EveryExport();
  std::vector<uint64_t> checksums(exports.size());
  for (size_t i = 0; i < exports.size(); ++i) {
    // Half of the threads run the same function, the others another one.
    const size_t k = (i + thread / 2) % exports.size();
    TestImage copy = image.Clone();
    Draw draw(parameters, Draw::kMeant);
    Digest digest;
    digest.Add(exports[k].call(copy.ref(), draw, digest));
    digest.AddImage(copy.get());
    checksums[k] = digest.value();
  }
  return checksums;
}

TEST(Threads, CallsTogetherGiveWhatEachGivesAlone) {
  simd::Use(nullptr);  // the choice of row functions is made by whoever comes first
  for (const int bits : {24, 1, 8, 32}) {
    std::vector<uint64_t> together[kThreads];
    std::vector<std::thread> threads;
    for (size_t t = 0; t < kThreads; ++t) {
      threads.emplace_back([&, t] { together[t] = RunAll(bits, t); });
    }
    for (std::thread& thread : threads) thread.join();
    for (size_t t = 0; t < kThreads; ++t) {
      EXPECT_EQ(together[t], RunAll(bits, t)) << bits << " bits, thread " << t;
    }
  }
}

}  // namespace
}  // namespace ombrilo::test
