// Calls on several threads do not meet: together they give what each gives alone. The thread
// sanitizer runs this file by itself.
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "rows/row_functions.h"
#include "support/image.h"

namespace ombrilo::test {
namespace {

constexpr size_t kThreads = 4;

using Operation = void (*)(PackedDib**);

// The first ones are by far the longest.
const Operation kOperations[] = {
    [](PackedDib** image) { omb_neuquant(image, 8); },
    [](PackedDib** image) { omb_dither(image, 8); },
    [](PackedDib** image) { omb_dither(image, 1); },
    [](PackedDib** image) { omb_EnhancePage(*image, 1, 1, 0, 0, 30, 8, 0, 0); },
    [](PackedDib** image) { omb_EdgePage(*image, 0, 0, 0, 0); },
    [](PackedDib** image) { omb_DoConvoluteDIB(*image, omb_getKERNAL(8), 1, 10); },
    [](PackedDib** image) { omb_sobel(*image); },
    [](PackedDib** image) { omb_scale(image, 70, 50, 2); },
    [](PackedDib** image) { omb_rotate(image, 17, 1); },
    [](PackedDib** image) { omb_autocontrast(*image, 0.01, 0.02); },
    [](PackedDib** image) { omb_binary(image, omb_autothreshold(*image)); },
};
constexpr size_t kCount = std::size(kOperations);

TestImage Make(int bits, size_t thread) {
  ImageBuilder builder(bits, 150 + static_cast<int>(thread), 90);
  if (bits == 8) builder.Colors(VariedColors(256, static_cast<uint32_t>(thread)));
  return builder.Pixels(Noise(1u << bits, 9 + static_cast<uint32_t>(thread))).Build();
}

// The results of all operations, for an image of this thread's own.
std::vector<TestImage> RunAll(int bits, size_t thread) {
  std::vector<TestImage> results(kCount);
  for (size_t i = 0; i < kCount; ++i) {
    // Half of the threads run the same operation, the others another one.
    const size_t k = (i + thread / 2) % kCount;
    results[k] = Make(bits, thread);
    kOperations[k](results[k].ref());
  }
  return results;
}

TEST(Threads, CallsTogetherGiveWhatEachGivesAlone) {
  rows::Use(nullptr);  // the choice of row functions is made by whoever comes first
  for (const int bits : {24, 8}) {
    std::vector<TestImage> together[kThreads];
    std::vector<std::thread> threads;
    for (size_t t = 0; t < kThreads; ++t) {
      threads.emplace_back([&, t] { together[t] = RunAll(bits, t); });
    }
    for (std::thread& thread : threads) thread.join();
    for (size_t t = 0; t < kThreads; ++t) {
      const std::vector<TestImage> alone = RunAll(bits, t);
      for (size_t k = 0; k < kCount; ++k) {
        EXPECT_EQ(together[t][k].Bytes(), alone[k].Bytes())
            << bits << " bits, operation " << k << ", thread " << t;
      }
    }
  }
}

}  // namespace
}  // namespace ombrilo::test
