#include "core/pixels.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/image.h"

namespace ombrilo::test {
namespace {

// One row of `width` pixels, the block ending with the row.
TestImage NoiseRow(int bits, int width) {
  return ImageBuilder(bits, width, 1).Pixels(Noise(bits == 24 ? 1u << 24 : 1u << bits, 5)).Build();
}

TEST(Pixels, UnpackingAndPackingAtEveryDepthAndLength) {
  for (const int bits : {1, 4, 8}) {
    for (int width = 1; width <= 70; ++width) {
      const TestImage image = NoiseRow(bits, width);
      const uint8_t* row = omb_FindDIBBits(image.get());
      const size_t row_bytes = (static_cast<size_t>(bits * width) + 7) / 8;
      std::vector<uint8_t> indices(static_cast<size_t>(width));
      UnpackIndices(row, static_cast<uint16_t>(bits), indices.size(), indices.data());
      for (int x = 0; x < width; ++x) EXPECT_EQ(indices[x], image.Pixel(x, 0));

      // Only the low bits of an index count, and bits after the last pixel keep their values.
      for (uint8_t& index : indices) index = static_cast<uint8_t>(index | 0xFFu << bits);
      TestImage packed = ImageBuilder(bits, width, 1).Filler(0xFF).Build();
      uint8_t* packed_row = omb_FindDIBBits(packed.get());
      PackIndices(indices.data(), static_cast<uint16_t>(bits), indices.size(), packed_row);
      EXPECT_EQ(packed.Pixels(), image.Pixels());
      const int rest = bits * width % 8;
      if (rest != 0) {
        EXPECT_EQ(packed_row[row_bytes - 1] & 0xFF >> rest, 0xFF >> rest);
      }
    }
  }
}

TEST(Pixels, CopyingFromAnyColumn) {
  for (const int bits : {1, 4, 8, 24}) {
    const TestImage image = NoiseRow(bits, 45);
    const uint8_t* row = omb_FindDIBBits(image.get());
    for (int column = 0; column < 45; ++column) {
      for (int pixels = 0; column + pixels <= 45; ++pixels) {
        std::vector<uint8_t> copy(static_cast<size_t>(bits * pixels + 7) / 8, 0xFF);
        CopyPixels(row, static_cast<uint16_t>(bits), static_cast<size_t>(column),
                   static_cast<size_t>(pixels), copy.data());
        std::vector<uint8_t> expected(copy.size(), 0xFF);
        for (int bit = 0; bit < bits * pixels; ++bit) {
          const int from = bits * column + bit;
          if ((row[from / 8] & 0x80 >> from % 8) == 0) expected[bit / 8] &= ~(0x80 >> bit % 8);
        }
        ASSERT_EQ(copy, expected) << bits << " bits, " << column << " + " << pixels;
      }
    }
  }
}

}  // namespace
}  // namespace ombrilo::test
