#include <gtest/gtest.h>

#include "support/image.h"

namespace ombrilo::test {
namespace {

int32_t Reference(const TestImage& image) {
  std::vector<int> count(256);
  for (const uint32_t rgb : image.Colors()) {
    const double r = rgb >> 16, g = rgb >> 8 & 255, b = rgb & 255;
    ++count[static_cast<size_t>(0.3 * r + 0.59 * g + 0.11 * b)];
  }
  const int half = image.width() * image.height() / 2;
  int up_to = count[0] + count[1], i = 1;
  while (up_to <= half) up_to += count[static_cast<size_t>(++i)];
  const int below = up_to - count[static_cast<size_t>(i)];
  return half - below < up_to - half ? i - 1 : i;
}

TEST(AutoThreshold, MedianOfTruncatedGrayLevels) {
  for (const uint32_t size_field : {40u, 12u, 41u}) {
    for (const int bits : {1, 4, 8, 24}) {
      for (const int colors : {bits == 24 ? 0 : 1 << bits, 2}) {
        if (colors == 2 && (size_field != 40 || bits == 24)) continue;
        const TestImage image = ImageBuilder(bits, 1041, 3)
                                    .CoreHeader(size_field)
                                    .Colors(VariedColors(colors, 41))
                                    .Pixels(Noise(bits == 24 ? 1 << 24 : 1u << bits, 42))
                                    .Build();
        EXPECT_EQ(omb_autothreshold(image.get()), Reference(image)) << size_field << " " << bits;
      }
    }
  }
}

// One level: a tie gives the level, an odd number of pixels the one below. Level 0 never ends the
// search, but may win the comparison.
TEST(AutoThreshold, FewLevels) {
  for (const uint32_t other : {0u, 0x5A5A5Au, 0xFFFFFFu}) {
    for (const uint32_t gray : {0u, 0x5A5A5Au}) {
      for (const int width : {4, 5, 8, 1023, 1024, 1025, 2000, 2047, 2049}) {
        ImageBuilder builder(24, width, 1);
        builder.Pixels([=](int x, int) { return x % 2 != 0 || x >= 2046 ? other : gray; });
        const TestImage image = builder.Build();
        EXPECT_EQ(omb_autothreshold(image.get()), Reference(image)) << gray << " " << other;
      }
    }
  }
}

}  // namespace
}  // namespace ombrilo::test
