#include "core/packed_dib.h"

#include <gtest/gtest.h>

#include <cstring>

#include "core/replacement.h"
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

TEST(PackedDib, ResizedBlocksKeepHeaderAndTableAndStartZeroed) {
  for (const uint32_t size_field : {40u, 12u, 30u, 4u}) {
    // Size fields below 12 put the color table over the header.
    uint8_t source[64] = {};
    std::memset(source, 0xC3, sizeof source);
    std::memcpy(source, &size_field, 4);
    const bool core = size_field != 40;
    const uint16_t bits = 1;
    std::memset(source + 4, 0, core ? 8 : 36);
    source[4] = 2;             // width
    source[core ? 6 : 8] = 1;  // height
    std::memcpy(source + (core ? 10 : 14), &bits, 2);
    const DibView view = *DibView::Open(reinterpret_cast<PackedDib*>(source));
    NewBlock block = NewBlock::Resized(view, 100, 7);
    ASSERT_TRUE(block);
    if (size_field < 12) continue;
    EXPECT_EQ(omb_DIBWidth(block.packed()), 100u);
    EXPECT_EQ(omb_DIBHeight(block.packed()), 7u);
    const Dib dib = block.dib();
    EXPECT_EQ(dib.block()[size_field], 0xC3);
    for (size_t i = dib.prefix_size(); i < dib.extent(); ++i) ASSERT_EQ(dib.block()[i], 0);
  }
  const TestImage image = ImageBuilder(24, 4, 4).Build();
  const DibView view = *DibView::Open(image.get());
  EXPECT_FALSE(NewBlock::Resized(view, 0x7FFFFFFF, 1));
  EXPECT_FALSE(NewBlock::Resized(view, 50000, 50000));
  EXPECT_FALSE(NewBlock::Resized(view, -1, 1));
  EXPECT_FALSE(NewBlock::Resized(view, 1, -1));
}

}  // namespace
}  // namespace ombrilo::test
