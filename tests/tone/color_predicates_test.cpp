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

}  // namespace
}  // namespace ombrilo::test
