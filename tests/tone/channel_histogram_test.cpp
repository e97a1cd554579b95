#include <gtest/gtest.h>

#include "support/untouched.h"

namespace ombrilo::test {
namespace {

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

}  // namespace
}  // namespace ombrilo::test
