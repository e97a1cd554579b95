#include <gtest/gtest.h>

#include "support/image.h"

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

TEST(ColorPredicates, ByDepth) {
  constexpr int kDepths[][3] = {{1, 0, 0},  {2, 0, 1},  {4, 0, 0}, {8, 1, 1},
                                {16, 0, 1}, {24, 1, 1}, {32, 0, 1}};
  for (const uint32_t size_field : {40u, 12u}) {
    for (const auto& [bits, filtersheet, balance] : kDepths) {
      const TestImage image = ImageBuilder(bits, 3, 1).CoreHeader(size_field).Build();
      EXPECT_EQ(omb_can_filtersheet(image.get()), filtersheet) << bits;
      EXPECT_EQ(omb_can_balance(image.get()), balance) << bits;
    }
  }
  EXPECT_EQ(omb_autoclr(), 1);
}

TEST(Pseudocolor, LoadsTheCallersColorsIntoGrayTables) {
  std::vector<uint8_t> table(4 * 256);
  for (size_t i = 0; i < table.size(); ++i) table[i] = static_cast<uint8_t>(i * 7 + 1);
  struct Case {
    int bits, colors;
    uint32_t size_field;
  };
  for (const auto& [bits, colors, size_field] :
       {Case{8, 256, 40}, {8, 16, 40}, {4, 16, 12}, {1, 2, 41}, {24, 5, 40}}) {
    ImageBuilder builder(bits, 9, 2);
    builder.CoreHeader(size_field).Colors(GrayRamp(colors)).Pixels(Noise(2, 1)).Filler(0xA5);
    TestImage image = builder.Build();
    std::vector<uint8_t> expected = image.Bytes();
    for (int i = 0; i < colors; ++i) {
      const int step = size_field == 40 ? 4 : 3;
      for (int c = 0; c < step; ++c) {
        expected[static_cast<size_t>(static_cast<int>(size_field) + step * i + c)] =
            c == 3 ? 0 : table[static_cast<size_t>(4 * i + c)];
      }
    }
    EXPECT_EQ(omb_pseudocolor(image.get(), table.data()), 1u);
    EXPECT_EQ(image.Bytes(), expected);
    EXPECT_EQ(omb_pseudocolor(image.get(), table.data()), 0u) << "colorful by now";
    EXPECT_EQ(image.Bytes(), expected);
  }
  EXPECT_EQ(omb_pseudocolor(ImageBuilder(24, 3, 1).Build().get(), table.data()), 0u);
}

}  // namespace
}  // namespace ombrilo::test
