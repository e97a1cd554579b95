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

// Entry i past the table is made of pixel bytes: graying it changes indices that come later.
TEST(ChannelHistogram, GrayModeOnAShortTableSeesItsOwnWrites) {
  for (const int bits : {4, 8}) {
    TestImage image =
        ImageBuilder(bits, 61, 7).Colors(VariedColors(2, 1)).Pixels(Noise(1u << bits, 13)).Build();
    std::vector<uint8_t> block = image.Bytes();
    const size_t stride = (61 * static_cast<size_t>(bits) + 31) / 32 * 4;
    Counters expected(256), counted(256);
    for (size_t y = 0; y < 7; ++y) {
      for (size_t x = 0; x < 61; ++x) {
        const uint8_t byte = block[48 + y * stride + x * static_cast<size_t>(bits) / 8];
        const size_t index = bits == 8 ? byte : x % 2 == 0 ? byte >> 4 : byte & 15;
        const size_t at = 40 + 4 * index;
        if (at >= block.size()) {
          ++expected[0];
          continue;
        }
        const uint32_t gray = GrayOf(Rgb(block[at + 2], block[at + 1], block[at]));
        block[at] = block[at + 1] = block[at + 2] = static_cast<uint8_t>(gray);
        ++expected[gray];
      }
    }
    EXPECT_EQ(omb_getchannelhistogram(image.get(), counted.data(), 4), 1);
    EXPECT_EQ(counted, expected);
    EXPECT_EQ(image.Bytes(), block);
  }
}

TEST(ChannelHistogram, SizesAreCutTo16Bits) {
  // 65,540 pixels a row: 4 are left, and rows follow each other as 4-pixel rows do.
  TestImage wide = ImageBuilder(8, 65540, 3).Pixels(Noise(256, 14)).Build();
  Counters counted(256), expected(256);
  for (int y = 2; y >= 0; --y) {
    for (int x = 0; x < 4; ++x) ++expected[wide.Pixel(x + 4 * (2 - y), 2)];
  }
  EXPECT_EQ(omb_getchannelhistogram(wide.get(), counted.data(), 1), 1);
  EXPECT_EQ(counted, expected);

  // A height of -3 is cut to 65,533 rows, of which the block has none: all count as color 0.
  for (const int bits : {1, 8, 24}) {
    TestImage image = ImageBuilder(bits, 5, -3).Colors({0x102030, 0x405060}).Build();
    EXPECT_EQ(omb_getchannelhistogram(image.get(), counted.data(), 1), 1);
    EXPECT_EQ(counted[bits == 24 ? 0 : 0x10], 5 * 65533);
    EXPECT_EQ(omb_getchannelhistogram(image.get(), counted.data(), 4), 1);
    EXPECT_EQ(image.Color(0), bits == 24 ? 0x102030u : GrayOf(0x102030) * 0x010101);
    EXPECT_EQ(image.Color(1), 0x405060u);
  }
  // The same when there is no color 0 either: a biClrUsed of 65,536 is a table of 0 entries.
  TestImage bare = ImageBuilder(8, 5, -3).Colors({}).Field(32, 65536).Build();
  EXPECT_EQ(omb_getchannelhistogram(bare.get(), counted.data(), 4), 1);
  EXPECT_EQ(counted[0], 5 * 65533);
  // Products beyond a counter's range wrap, and must not take time.
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
