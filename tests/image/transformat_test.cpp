#include <gtest/gtest.h>

#include <cstring>

#include "core/bytes.h"
#include "core/packed_dib.h"
#include "rows/row_functions.h"
#include "support/untouched.h"

namespace ombrilo::test {
namespace {

std::function<uint32_t(int, int)> EveryThird(uint32_t value) {
  return [=](int x, int) { return x % 3 == 0 ? value : 0; };
}

TEST(Transformat, DefaultLayouts) {
  struct Case {
    int bits;
    uint32_t pixel, rgb;
  };
  for (const Case& c : {Case{16, 0x7FFF, Rgb(248, 248, 248)},
                        {16, 0x001F, Rgb(0, 0, 248)},
                        {16, 0x8000 | 3 << 10 | 2 << 5 | 1, Rgb(24, 16, 8)},
                        {32, 0xFF123456, 0x123456u}}) {
    // Rows of every length, to the last byte, and one that is converted in several runs.
    for (int width = 1; width < 1200; width += width < 70 ? 1 : 1030) {
      TestImage image =
          ImageBuilder(c.bits, width, 2).Pixels(EveryThird(c.pixel)).Filler(7).Build();
      const TestImage expected = ImageBuilder(24, width, 2).Pixels(EveryThird(c.rgb)).Build();
      EXPECT_EQ(omb_transformat(image.ref()), 1u);
      ASSERT_EQ(image.Bytes(), expected.Bytes()) << width;
    }
  }
}

// What no cache holds is written in another way.
TEST(Transformat, RowsOfLargeImages) {
  const TestImage image = ImageBuilder(32, 2403, 1203).Pixels(Noise(1u << 31, 3)).Build();
  const DibView from = *DibView::Open(image.get());
  for (auto set = simd::Supported(); *set != nullptr; ++set) {
    simd::Use(*set);
    TestImage converted = image.Clone();
    ASSERT_EQ(omb_transformat(converted.ref()), 1u);
    const DibView to = *DibView::Open(converted.get());
    for (int y = 0; y < 1203; ++y) {
      uint8_t expected[3 * 2403];
      for (int i = 0; i < 3 * 2403; ++i) expected[i] = from.row(y)[i / 3 * 4 + i % 3];
      ASSERT_EQ(std::memcmp(to.row(y), expected, sizeof expected), 0) << (*set)->name << ' ' << y;
    }
  }
  simd::Use(nullptr);
}

// The masks follow the header, where a table of three entries is, or the pixels themselves.
TestImage Bitfields(int bits, uint32_t red, uint32_t green, uint32_t blue, uint32_t pixel) {
  return ImageBuilder(bits, 1100, 2)
      .Colors({0, 0, 0})
      .Pixels(EveryThird(pixel))
      .Field(16, 3)
      .Field(40, red)
      .Field(44, green)
      .Field(48, blue)
      .Build();
}

TEST(Transformat, MasksOfTheHeader) {
  struct Case {
    int bits;
    uint32_t red, green, blue, pixel, rgb;
  };
  const Case cases[] = {
      {16, 0xF800, 0x07E0, 0x001F, 0xFFFF, Rgb(248, 252, 248)},
      {16, 0xF800, 0x07E0, 0x001F, 1 << 11 | 1 << 5 | 1, Rgb(8, 4, 8)},
      {32, 0xFF, 0xFF00, 0xFF0000, 0x563412, 0x123456},
      {32, 0xFF000000, 0x0F000000, 0, 0xA7000000, Rgb(0xA7, 0x70, 0)},
      // Ten bits would move up by -2, which counts as 30: nothing is left.
      {32, 0x3FF00000, 0x000FFC00, 0x000000FF, 0xFFFFFFFF, Rgb(0, 0, 255)},
      // A mask with a hole counts its bits but keeps their places.
      {32, 0x00F00F00, 0xFF00, 0xFF, 0x00100100, Rgb(0x01, 0x01, 0)},
  };
  for (const Case& c : cases) {
    TestImage image = Bitfields(c.bits, c.red, c.green, c.blue, c.pixel);
    EXPECT_EQ(omb_transformat(image.ref()), 1u);
    const TestImage expected = ImageBuilder(24, 1100, 2).Pixels(EveryThird(c.rgb)).Build();
    ASSERT_EQ(image.bit_count(), 24);
    EXPECT_EQ(image.Pixels(), expected.Pixels()) << std::hex << c.red;
    // biCompression and biSizeImage are cleared; biClrUsed stays, with a zeroed table.
    EXPECT_EQ(LoadU32(image.raw() + 16), 0u);
    EXPECT_EQ(LoadU32(image.raw() + 32), 3u);
    EXPECT_EQ(image.Color(0) | image.Color(1) | image.Color(2), 0u);
  }
}

// 24-bit rows of this width have more than 2^31 bits: no function would take the result.
TEST(Transformat, RefusesRowsThatCannotBeHonoured) {
  TestImage image(omb_newdib(89478485, 1, 16));
  EXPECT_EQ(omb_transformat(image.ref()), 0u);
  EXPECT_EQ(image.bit_count(), 16);
}

TEST(Transformat, OtherDepthsAreRefused) {
  for (const int bits : {2, 12, 48}) {
    Untouched image(ImageBuilder(bits, 3, 2).Build());
    EXPECT_EQ(omb_transformat(image.ref()), 0u);
  }
}

}  // namespace
}  // namespace ombrilo::test
