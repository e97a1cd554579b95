#include <gtest/gtest.h>

#include "support/image.h"

namespace ombrilo::test {
namespace {

// A table of 20 bytes is announced as longer: the other entries lie over the pixels, and beyond the
// end of the block nothing may be touched. 65536 is 0 in its low 16 bits.
TEST(Invert, TablesThatTheHeaderMakesLonger) {
  for (const uint32_t used : {16384u + 5, 65536u}) {
    const int colors = used == 65536 ? 0 : 5;
    const TestImage image = ImageBuilder(8, 6, 1)
                                .Colors(VariedColors(colors, 1))
                                .Pixels(Noise(256, 2))
                                .Filler(0xA5)
                                .Field(32, used)
                                .Build();
    std::vector<uint8_t> expected = image.Bytes();
    for (size_t i = 40; used != 65536 && i < expected.size(); ++i) {
      if (i % 4 != 3) expected[i] = static_cast<uint8_t>(255 - expected[i]);
    }
    EXPECT_EQ(omb_invert(image.get()), 1u);
    EXPECT_EQ(image.Bytes(), expected);
  }
}

}  // namespace
}  // namespace ombrilo::test
