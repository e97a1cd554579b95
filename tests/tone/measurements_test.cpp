// What is asked of an image: predicates, histograms, a threshold.
#include <gtest/gtest.h>

#include "support/untouched.h"

namespace ombrilo::test {
namespace {

TEST(ColorPredicates, OnlyTheAnnouncedTableDecides) {
  for (const int place : {-1, 0, 2, 255}) {
    std::vector<uint32_t> colors(256, 0x404040);
    if (place >= 0) colors[static_cast<size_t>(place)] = 0x404041;
    for (const uint32_t size_field : {40u, 12u, 41u}) {
      const TestImage image =
          ImageBuilder(8, 3, 1).CoreHeader(size_field).Colors(colors).Filler(0xA5).Build();
      EXPECT_EQ(omb_iscolorful(image.get()), place >= 0);
      EXPECT_EQ(omb_can_gray(image.get()), place >= 0);
      EXPECT_EQ(omb_can_pseudocolor(image.get()), place < 0);
    }
    const TestImage two = ImageBuilder(8, 3, 1).Colors(colors).Field(32, 2).Build();
    EXPECT_EQ(omb_iscolorful(two.get()), place == 0);
  }
  // Without entries an image is colorful; entries past the block are black.
  const TestImage gray_pixels = ImageBuilder(24, 3, 1).Build();
  const TestImage no_entries = ImageBuilder(8, 3, 1).Colors({}).Field(32, 65536).Build();
  const TestImage beyond = ImageBuilder(24, 0, 0).Colors(GrayRamp(2)).Field(32, 16386).Build();
  for (const TestImage* image : {&gray_pixels, &no_entries, &beyond}) {
    EXPECT_EQ(omb_iscolorful(image->get()), image != &beyond);
    EXPECT_EQ(omb_can_pseudocolor(image->get()), image == &beyond);
  }
}

TEST(ColorPredicates, DepthsThatOperationsAreFor) {
  for (const int bits : {1, 4, 8, 16, 24, 32}) {
    for (const uint32_t size_field : {40u, 12u}) {
      const TestImage image = ImageBuilder(bits, 3, 1).CoreHeader(size_field).Build();
      EXPECT_EQ(omb_can_filtersheet(image.get()), bits == 8 || bits == 24);
      EXPECT_EQ(omb_can_balance(image.get()), bits != 1 && bits != 4);
    }
  }
  for (const auto can : {omb_can_filtersheet, omb_can_balance, omb_can_pseudocolor, omb_can_gray}) {
    EXPECT_EQ(can(nullptr), 0);
  }
  EXPECT_EQ(omb_autoclr(), 1);
}

using Counters = std::vector<int32_t>;

uint32_t GrayOf(uint32_t rgb) {
  return (59 * (rgb >> 8 & 255) + 11 * (rgb & 255) + 30 * (rgb >> 16 & 255)) / 100;
}

uint32_t Measured(uint32_t rgb, int channel) {
  return channel == 4 ? GrayOf(rgb) : rgb >> (24 - 8 * channel) & 255;
}

TEST(ChannelHistogram, CountsAndGrayModeMakesPixelsGray) {
  for (const uint32_t size_field : {40u, 12u}) {
    for (const int channel : {1, 2, 3, 4}) {
      ImageBuilder builder(24, 1045, 3);
      builder.CoreHeader(size_field).Pixels(Noise(1 << 24, 11)).Filler(0xA5);
      TestImage image = builder.Build();
      Counters expected(256), counted(256, -1);
      for (const uint32_t rgb : image.Pixels()) ++expected[Measured(rgb, channel)];
      EXPECT_EQ(omb_getchannelhistogram(image.get(), counted.data(), channel), 1);
      EXPECT_EQ(counted, expected);
      if (channel == 4) {
        builder.Pixels([](int x, int y) { return GrayOf(Noise(1 << 24, 11)(x, y)) * 0x010101; });
      }
      EXPECT_EQ(image.Bytes(), builder.Build().Bytes()) << channel;
    }
  }
}

// The gray channel changes the entries that pixels use, and no others.
TEST(ChannelHistogram, IndexedPixelsAreCountedByTheirColors) {
  for (const int bits : {1, 4, 8}) {
    for (const bool core : {false, true}) {
      for (const int channel : {1, 2, 3, 4}) {
        std::vector<uint32_t> table = VariedColors(1 << bits, 12);
        ImageBuilder builder(bits, 139, 3);
        builder.Pixels([=](int x, int) { return bits == 1 ? 1u : 2u * (x & 7); }).Filler(0xA5);
        TestImage image = builder.Colors(table).CoreHeader(core ? 12 : 40).Build();
        Counters expected(256), counted(256, -1);
        for (const uint32_t rgb : image.Colors()) ++expected[Measured(rgb, channel)];
        EXPECT_EQ(omb_getchannelhistogram(image.get(), counted.data(), channel), 1);
        EXPECT_EQ(counted, expected) << bits << " bits, channel " << channel;
        for (const uint32_t index : image.Pixels()) {
          if (channel == 4) table[index] = GrayOf(table[index]) * 0x010101;
        }
        EXPECT_EQ(image.Bytes(), builder.Colors(table).Build().Bytes()) << bits << ", " << channel;
      }
    }
  }
}

// Products beyond a counter's range wrap, and must not take time.
TEST(ChannelHistogram, MissingPixelsAreCountedAtOnce) {
  Counters counted(256);
  TestImage huge = ImageBuilder(24, -1, -1).Build();
  EXPECT_EQ(omb_getchannelhistogram(huge.get(), counted.data(), 1), 1);
  EXPECT_EQ(static_cast<uint32_t>(counted[0]), 65535u * 65535u);
}

TEST(ChannelHistogram, RefusalsAndUnknownChannels) {
  const Counters zero(256);
  // An unknown channel is refused at 1 bit only, at the first pixel.
  constexpr int kCases[][4] = {{1, 0, 5, 0}, {1, 5, 5, 0},  {1, 9, 0, 1},
                               {4, 0, 5, 1}, {8, -1, 5, 1}, {24, 5, 5, 1},
                               {2, 1, 5, 0}, {16, 1, 5, 0}, {32, 4, 5, 0}};
  for (const auto& [bits, channel, width, result] : kCases) {
    const Untouched image(ImageBuilder(bits, width, 2).Pixels(Noise(2, 1)).Build());
    EXPECT_EQ(omb_getchannelhistogram(image.get(), nullptr, channel), 0);
    Counters cleared(256, 7);
    EXPECT_EQ(omb_getchannelhistogram(image.get(), cleared.data(), channel), result) << bits;
    EXPECT_EQ(cleared, zero);
  }
}

int32_t MedianGray(const TestImage& image) {
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
        EXPECT_EQ(omb_autothreshold(image.get()), MedianGray(image)) << size_field << " " << bits;
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
        EXPECT_EQ(omb_autothreshold(image.get()), MedianGray(image)) << gray << " " << other;
      }
    }
  }
}

}  // namespace
}  // namespace ombrilo::test
