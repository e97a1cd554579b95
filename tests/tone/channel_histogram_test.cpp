#include <gtest/gtest.h>

#include "support/image.h"

namespace ombrilo::test {
namespace {

using Counters = std::vector<int32_t>;

uint32_t GrayOf(uint32_t rgb) {
  return (59 * (rgb >> 8 & 255) + 11 * (rgb & 255) + 30 * (rgb >> 16 & 255)) / 100;
}

uint32_t Measured(uint32_t rgb, int channel) {
  return channel == 4 ? GrayOf(rgb) : rgb >> (24 - 8 * channel) & 255;
}

TEST(ChannelHistogram, CountsAndGrayModeMakesUsedColorsGray) {
  for (const uint32_t size_field : {40u, 12u, 41u}) {
    for (const int bits : {1, 4, 8, 24}) {
      for (const int channel : {1, 2, 3, 4}) {
        SCOPED_TRACE(std::to_string(bits) + " bits, channel " + std::to_string(channel));
        const uint32_t used = bits == 24 ? 1 << 24 : bits == 1 ? 2 : (1u << bits) - 3;
        ImageBuilder builder(bits, 1045, 3);
        builder.CoreHeader(size_field).Pixels(Noise(used, 11)).Filler(0xA5);
        if (bits <= 8) builder.Colors(VariedColors(1 << bits, 12));
        TestImage image = builder.Build();
        const TestImage before = image.Clone();
        Counters expected(256), counted(256, -1);
        std::vector<uint32_t> gray_pixels = before.Pixels();
        for (uint32_t& pixel : gray_pixels) {
          const uint32_t rgb = bits == 24 ? pixel : before.Color(static_cast<int>(pixel));
          ++expected[Measured(rgb, channel)];
          if (bits == 24) pixel = GrayOf(pixel) * 0x010101;
        }
        EXPECT_EQ(omb_getchannelhistogram(image.get(), counted.data(), channel), 1);
        EXPECT_EQ(counted, expected);
        if (channel != 4) {
          EXPECT_EQ(image.Bytes(), before.Bytes());
          continue;
        }
        EXPECT_EQ(image.Pixels(), bits == 24 ? gray_pixels : before.Pixels());
        EXPECT_EQ(image.Bytes().back(), before.Bytes().back());
        for (int i = 0; bits != 24 && i < 1 << bits; ++i) {
          const bool is_used = static_cast<uint32_t>(i) < used;
          EXPECT_EQ(image.Color(i), is_used ? GrayOf(before.Color(i)) * 0x010101 : before.Color(i));
        }
        EXPECT_EQ(omb_getchannelhistogram(image.get(), counted.data(), 1), 1);
        EXPECT_EQ(counted, expected) << "once gray, red counts the same";
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
    TestImage image = ImageBuilder(bits, width, 2).Pixels(Noise(2, 1)).Build();
    const std::vector<uint8_t> before = image.Bytes();
    EXPECT_EQ(omb_getchannelhistogram(image.get(), nullptr, channel), 0);
    Counters cleared(256, 7);
    EXPECT_EQ(omb_getchannelhistogram(image.get(), cleared.data(), channel), result) << bits;
    EXPECT_EQ(cleared, zero);
    EXPECT_EQ(image.Bytes(), before);
  }
}

}  // namespace
}  // namespace ombrilo::test
