#include <gtest/gtest.h>

#include "support/image.h"

namespace ombrilo::test {
namespace {

TEST(Invert, IndexedImagesChangeTheirTableAndKeepPixelsAndReservedBytes) {
  for (const bool core : {false, true}) {
    for (const int bits : {1, 4, 8}) {
      ImageBuilder builder(bits, 7, 3);
      builder.Colors(VariedColors(1 << bits, 1)).Pixels(Noise(1u << bits, 2)).Filler(0xA5);
      if (core) builder.CoreHeader();
      TestImage image = builder.Build();
      const TestImage before = image.Clone();
      EXPECT_EQ(omb_invert(image.get()), 1u);
      for (int i = 0; i < 1 << bits; ++i) EXPECT_EQ(image.Color(i), before.Color(i) ^ 0xFFFFFF);
      EXPECT_EQ(image.Pixels(), before.Pixels());
      EXPECT_EQ(omb_invert(image.get()), 1u);
      EXPECT_EQ(image.Bytes(), before.Bytes());
    }
  }
}

TEST(Invert, OnlyTheAnnouncedTableEntriesChange) {
  TestImage image =
      ImageBuilder(8, 8, 1).Colors({0x102030, 0x405060}).Pixels(Noise(256, 3)).Build();
  const TestImage before = image.Clone();
  EXPECT_EQ(omb_invert(image.get()), 1u);
  EXPECT_EQ(image.Color(0), 0xEFDFCFu);
  EXPECT_EQ(image.Color(1), 0xBFAF9Fu);
  EXPECT_EQ(image.Pixels(), before.Pixels());
}

TEST(Invert, TrueColorPixelsChangeAndPaddingStays) {
  for (const bool core : {false, true}) {
    ImageBuilder builder(24, 5, 2);
    builder.Pixels([](int x, int y) { return Rgb(255, 128 + x, y); }).Filler(0x5A);
    if (core) builder.CoreHeader();
    TestImage image = builder.Build();
    const uint8_t* end = image.raw() + image.Bytes().size();
    EXPECT_EQ(omb_invert(image.get()), 1u);
    EXPECT_EQ(image.Pixel(0, 0), Rgb(0, 127, 255));
    EXPECT_EQ(image.Pixel(4, 1), Rgb(0, 123, 254));
    EXPECT_EQ(end[-1], 0x5A);
  }
}

TEST(Invert, RefusesOtherDepthsAndNull) {
  EXPECT_EQ(omb_invert(nullptr), 0u);
  for (const int bits : {2, 16, 32}) {
    TestImage image = ImageBuilder(bits, 4, 2).Build();
    const std::vector<uint8_t> before = image.Bytes();
    EXPECT_EQ(omb_invert(image.get()), 0u);
    EXPECT_EQ(image.Bytes(), before);
  }
}

TEST(Invert, ImagesWithoutRowsAreDone) {
  for (const int height : {0, -3}) {
    TestImage image = ImageBuilder(24, 4, height).Build();
    EXPECT_EQ(omb_invert(image.get()), 1u);
  }
  TestImage no_table = ImageBuilder(8, 4, 2).Colors({}).Field(32, 65536).Build();
  const std::vector<uint8_t> before = no_table.Bytes();
  EXPECT_EQ(omb_invert(no_table.get()), 1u);
  EXPECT_EQ(no_table.Bytes(), before);
}

// 16,389 entries are announced, which make a table of 20 bytes: the rest of the entries lie over
// the pixels, and beyond the end of the block nothing may be touched.
TEST(Invert, TableLongerThanTheBlockStopsAtItsEnd) {
  TestImage image =
      ImageBuilder(8, 6, 1).Colors(GrayRamp(5)).Pixels(Noise(256, 4)).Field(32, 16384 + 5).Build();
  const std::vector<uint8_t> before = image.Bytes();
  EXPECT_EQ(omb_invert(image.get()), 1u);
  const std::vector<uint8_t> after = image.Bytes();
  ASSERT_EQ(after.size(), before.size());
  for (size_t i = 40; i < after.size(); ++i) {
    EXPECT_EQ(after[i], i % 4 == 3 ? before[i] : 255 - before[i]) << i;
  }
}

}  // namespace
}  // namespace ombrilo::test
