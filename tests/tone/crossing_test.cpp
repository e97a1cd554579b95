// Crossings in images that are large enough to be measured by a sample and proof.
#include "tone/crossing.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "rows/row_functions.h"
#include "support/image.h"

namespace ombrilo::test {
namespace {

template <size_t kChannels>
void ExpectCrossings(const DibView& dib, const std::vector<uint8_t>& levels, double number) {
  const auto pixels = static_cast<double>(levels.size() / kChannels);
  PixelCrossings<kChannels> crossings(dib);
  Crossing found[kChannels];
  for (int twice = 0; twice < 2; ++twice) crossings.Find(number, found);
  for (size_t c = 0; c < kChannels; ++c) {
    int64_t counts[256] = {}, below = 0;
    for (size_t i = c; i < levels.size(); i += kChannels) ++counts[levels[i]];
    int level = 0;
    for (; level < 256 && !(static_cast<double>(below + counts[level]) > number); ++level) {
      below += counts[level];
    }
    EXPECT_EQ(found[c].level, level) << number << ", channel " << c << " of " << kChannels;
    if (number < 0 || !(number < pixels)) continue;
    EXPECT_EQ(found[c].below, below) << number;
    EXPECT_EQ(found[c].up_to, below + counts[level]) << number;
  }
}

TEST(PixelCrossings, AreThoseOfAPlainCount) {
  constexpr int kWidth = 259, kHeight = 256;
  // Every 17th row is counted first: y is 0 there.
  using Scene = uint32_t (*)(uint32_t noise, int x, int y);
  constexpr Scene kScenes[] = {
      [](uint32_t noise, int, int) { return noise; },
      [](uint32_t, int x, int) { return x % 2 == 0 ? 0x051020u : 0x061121u; },
      [](uint32_t, int x, int) { return 0x010101u * static_cast<uint32_t>(x * 255 / kWidth); },
      [](uint32_t noise, int, int) { return 0xFFFFFF - (noise % 50 == 0 ? 0x20406 : 0u); },
      // The sample is one window too low or too high,
      [](uint32_t noise, int, int y) { return (y == 0 ? 0x60A040u : 0x63A33Du) + noise % 2; },
      // far away,
      [](uint32_t noise, int, int y) { return y == 0 ? 0x10FF80 : 0xC8C800 + noise % 3; },
      // or without the least level.
      [](uint32_t noise, int, int y) { return y == 0 ? 0x404040 : noise & 0x7F7F7F; },
  };
  for (const Scene scene : kScenes) {
    std::vector<uint8_t> bgr, gray;
    const auto noise = Noise(1 << 24, 5);
    const TestImage image =
        ImageBuilder(24, kWidth, kHeight)
            .Filler(0x77)
            .Pixels([&](int x, int y) { return scene(noise(x, y), x, (kHeight - 1 - y) % 17); })
            .Build();
    for (const uint32_t rgb : image.Pixels()) {
      const uint8_t b = rgb & 255, g = rgb >> 8 & 255, r = rgb >> 16 & 255;
      bgr.insert(bgr.end(), {b, g, r});
      gray.push_back(static_cast<uint8_t>(0.3 * r + 0.59 * g + 0.11 * b));
    }
    constexpr double kPixels = kWidth * kHeight;
    for (auto set = simd::Supported(); *set != nullptr; ++set) {
      simd::Use(*set);
      // Among them exactly the count of the lower of two levels.
      for (const double number :
           {-1.0, 0.0, std::trunc(0.01 * kPixels), 130.0 * kHeight, std::trunc(0.99 * kPixels),
            kPixels - 1, kPixels, 1e300, std::nan("")}) {
        ExpectCrossings<1>(*DibView::Open(image.get()), gray, number);
        ExpectCrossings<3>(*DibView::Open(image.get()), bgr, number);
      }
    }
    simd::Use(nullptr);
  }
}

}  // namespace
}  // namespace ombrilo::test
