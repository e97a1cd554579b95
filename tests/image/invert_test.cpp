#include <gtest/gtest.h>

#include "core/packed_dib.h"
#include "support/image.h"

namespace ombrilo::test {
namespace {

// The block after the call: announced table entries or pixels inverted as far as the block reaches,
// reserved bytes and padding as they were.
std::vector<uint8_t> Inverted(const TestImage& image) {
  const DibView dib = *DibView::Open(image.get());
  std::vector<uint8_t> bytes = image.Bytes();
  const auto flip = [&](size_t at) {
    if (at < bytes.size()) bytes[at] = static_cast<uint8_t>(255 - bytes[at]);
  };
  for (size_t i = 0; dib.indexed() && i < dib.header().table_count(); ++i) {
    for (size_t c = 0; c < 3; ++c) flip(dib.header().header_size + i * (dib.core() ? 3 : 4) + c);
  }
  for (int y = 0; dib.bit_count() == 24 && y < dib.height(); ++y) {
    for (int x = 0; x < 3 * dib.width(); ++x) {
      flip(dib.prefix_size() + static_cast<size_t>(y) * dib.stride() + static_cast<size_t>(x));
    }
  }
  return bytes;
}

TEST(Invert, TablesOrPixels) {
  struct Case {
    int bits, width, height, colors;
    bool core;
    uint32_t colors_used;  // when it is not the number of colors
  };
  for (const Case& c : {Case{1, 7, 3, 2, false, 0},
                        {1, 7, 3, 2, true, 0},
                        {4, 7, 3, 16, true, 0},
                        {8, 7, 3, 256, false, 0},
                        {8, 7, 3, 256, true, 0},
                        {8, 8, 1, 2, false, 0},
                        {8, 4, 2, 0, false, 65536},  // 0 in its low 16 bits
                        // A table of 20 bytes: the other entries lie over the pixels, and beyond
                        // the end of the block nothing may be touched.
                        {8, 6, 1, 5, false, 16384 + 5},
                        {24, 5, 2, 0, false, 0},
                        {24, 5, 2, 0, true, 0},
                        {24, 5, 2, 3, false, 0},
                        {24, 4, 0, 0, false, 0},
                        {24, 4, -3, 0, false, 0}}) {
    ImageBuilder builder(c.bits, c.width, c.height);
    builder.Colors(VariedColors(c.colors, 1)).Pixels(Noise(1u << c.bits, 2)).Filler(0xA5);
    if (c.core) builder.CoreHeader();
    if (c.colors_used != 0) builder.Field(32, c.colors_used);
    const TestImage image = builder.Build();
    const std::vector<uint8_t> expected = Inverted(image);
    EXPECT_EQ(omb_invert(image.get()), 1u);
    EXPECT_EQ(image.Bytes(), expected) << c.bits << " bits, " << c.colors << " colors";
  }
}

TEST(Invert, RefusesOtherDepthsAndNull) {
  EXPECT_EQ(omb_invert(nullptr), 0u);
  for (const int bits : {2, 16, 32}) {
    const TestImage image = ImageBuilder(bits, 4, 2).Colors({1, 2}).Build();
    const std::vector<uint8_t> before = image.Bytes();
    EXPECT_EQ(omb_invert(image.get()), 0u);
    EXPECT_EQ(image.Bytes(), before);
  }
}

}  // namespace
}  // namespace ombrilo::test
