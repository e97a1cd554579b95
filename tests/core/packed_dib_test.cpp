#include "core/packed_dib.h"

#include <gtest/gtest.h>

#include "support/image.h"

namespace ombrilo::test {
namespace {

TEST(PackedDib, ExtentsThatCannotBeHonouredAreRefused) {
  struct Case {
    int bits;
    uint32_t width, height;
    bool accepted;
  };
  const Case cases[] = {
      {24, 0x7FFFFFFF, 1, false},   // a row of more than 2^31 bits
      {1, 0x7FFFFFFF, 1, false},    // the rounding of its row overflows
      {1, 0x7FFFFFE0, 1, true},     //
      {8, 0x8000, 0x10000, false},  // 2^31 bytes of rows
      {8, 0x8000, 0xFFFF, true},    //
      {24, 0x7FFFFFFF, 0, true},    // no rows: no extent to speak of
      {24, 0x7FFFFFFF, 0x80000000, true}, {24, 0xFFFFFFFF, 0x7FFFFFFF, true},
  };
  for (const Case& c : cases) {
    const TestImage image = ImageBuilder(c.bits, 1, 0).Field(4, c.width).Field(8, c.height).Build();
    EXPECT_EQ(DibView::Open(image.get()).has_value(), c.accepted) << c.width << " x " << c.height;
  }
  for (const auto& [bits, width] : {std::pair{0, 5}, {24, 0}}) {  // not two billion rows of nothing
    const TestImage image = ImageBuilder(bits, width, 0).Field(8, 0x7FFFFFFF).Build();
    EXPECT_EQ(DibView::Open(image.get())->pixel_rows(), 0) << bits;
  }
  const TestImage far_rows = ImageBuilder(24, 1, 1).CoreHeader().Field(0, 0x7FFFFFFF).Build();
  EXPECT_FALSE(DibView::Open(far_rows.get()).has_value());
  EXPECT_EQ(omb_invert(far_rows.get()), 0u);
}

TEST(PackedDib, ReadsAndWritesStayInsideTheExtent) {
  const TestImage image = ImageBuilder(8, 3, 1).Colors({0}).Pixels(Noise(256, 1)).Filler(9).Build();
  const Dib dib = *Dib::Open(image.get());
  ASSERT_EQ(dib.extent(), 48u);
  uint8_t bytes[4] = {1, 1, 1, 1};
  dib.Read(46, bytes, 4);
  EXPECT_EQ(bytes[1], 9);
  EXPECT_EQ(bytes[2], 0);
  EXPECT_EQ(bytes[3], 0);
  EXPECT_EQ(dib.ReadU32(48), 0u);
  EXPECT_EQ(dib.ReadU32(0xFFFFFFFF), 0u);
  dib.Write(47, "abcd", 4);
  dib.Write(48, "abcd", 4);
  EXPECT_EQ(image.Bytes()[47], 'a');
}

}  // namespace
}  // namespace ombrilo::test
