// The bridge between pixel arrays of hosts and images, against plain code.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "core/bytes.h"
#include "core/packed_dib.h"
#include "rows/row_functions.h"
#include "support/image.h"
#include "support/naive.h"

namespace ombrilo::test {
namespace {

constexpr uint32_t kFormats[] = {OMB_PIXELS_BIT, OMB_PIXELS_GRAY, OMB_PIXELS_BGR,
                                 OMB_PIXELS_RGB, OMB_PIXELS_BGRA, OMB_PIXELS_RGBA};
constexpr uint8_t kUntouched = 0xA7;

size_t RowBytes(uint32_t format, int width) {
  const size_t bits = format == OMB_PIXELS_BIT ? 1 : format / 8 * 8;
  return (bits * static_cast<size_t>(width) + 7) / 8;
}

int Gray(uint32_t rgb) {
  return static_cast<int>((11 * (rgb & 255) + 59 * (rgb >> 8 & 255) + 30 * (rgb >> 16)) / 100);
}

// A host's array with room between its rows, passed from either end.
struct Array {
  Array(uint32_t format_in, int width_in, int height_in, bool up)
      : format(format_in), width(width_in), height(height_in), row(RowBytes(format, width)) {
    stride = static_cast<intptr_t>(row + 3) * (up ? -1 : 1);
    bytes.assign((row + 3) * static_cast<size_t>(height), kUntouched);
    top = bytes.data() + (up ? (row + 3) * static_cast<size_t>(height - 1) : 0);
  }
  uint8_t* Pixel(int x, int y) const { return top + y * stride + x * static_cast<int>(format / 8); }
  uint32_t Color(int x, int y) const {
    const uint8_t* p = Pixel(x, y);
    switch (format) {
      case OMB_PIXELS_BIT:
        return (top[y * stride + x / 8] >> (7 - x % 8) & 1) != 0 ? 0xFFFFFF : 0;
      case OMB_PIXELS_GRAY:
        return Rgb(*p, *p, *p);
      case OMB_PIXELS_BGR:
      case OMB_PIXELS_BGRA:
        return Rgb(p[2], p[1], p[0]);
      default:
        return Rgb(p[0], p[1], p[2]);
    }
  }
  bool OthersAreUntouched() const {
    for (size_t i = 0; i < bytes.size(); ++i) {
      if (i % (row + 3) >= row && bytes[i] != kUntouched) return false;
    }
    return true;
  }

  uint32_t format;
  int width, height;
  size_t row;
  intptr_t stride;
  std::vector<uint8_t> bytes;
  uint8_t* top;
};

TEST(FromPixels, EveryFormatInEitherDirection) {
  for (const uint32_t format : kFormats) {
    for (const int width : {1, 5, 8, 33, 700}) {
      for (const bool up : {false, true}) {
        Array array(format, width, 3, up);
        const auto noise = Noise(256, 5);
        for (int y = 0; y < 3; ++y) {
          for (size_t i = 0; i < array.row; ++i) {
            // The middle row is opaque, but for its end.
            const bool opaque = y == 1 && i % 4 == 3 && i + 50 < array.row;
            array.top[y * array.stride + static_cast<intptr_t>(i)] =
                static_cast<uint8_t>(opaque ? 255 : noise(static_cast<int>(i), y));
          }
        }
        const TestImage image(
            omb_frompixels(format, width, 3, array.top, array.stride, Rgb(0x11, 0x80, 0xFE)));
        const int bits = format == OMB_PIXELS_BIT ? 1 : format == OMB_PIXELS_GRAY ? 8 : 24;
        ASSERT_NE(image.get(), nullptr);
        const bool alpha = RowBytes(format, 8) == 32;
        ImageBuilder expected(bits, width, 3);
        expected.Pixels([&](int x, int y) -> uint32_t {
          const uint32_t color = array.Color(x, y);
          if (bits < 24) return bits == 1 ? color & 1 : color & 255;
          if (!alpha) return color;
          const int a = array.Pixel(x, y)[3];
          const auto over = [a](uint32_t c, int back) {
            return (static_cast<int>(c & 255) * a + back * (255 - a) + 127) / 255;
          };
          // The background is 0x00BBGGRR.
          return Rgb(over(color >> 16, 0xFE), over(color >> 8, 0x80), over(color, 0x11));
        });
        EXPECT_EQ(image.Bytes(), expected.Build().Bytes()) << format << ' ' << width;
      }
    }
  }
}

TEST(FromPixels, EveryColorOverEveryBackground) {
  for (int back = 0; back < 256; back += 15) {
    std::vector<uint8_t> pixels;
    for (int i = 0; i < 65536; ++i) {
      for (const int c : {i >> 8, i >> 8, i >> 8, i & 255})
        pixels.push_back(static_cast<uint8_t>(c));
    }
    const TestImage image(omb_frompixels(OMB_PIXELS_BGRA, 256, 256, pixels.data(), 1024,
                                         static_cast<uint32_t>(back) * 0x10101));
    for (int i = 0; i < 65536; ++i) {
      const int a = i & 255;
      const int v = ((i >> 8) * a + back * (255 - a) + 127) / 255;
      ASSERT_EQ(image.Pixel(i & 255, i >> 8), Rgb(v, v, v)) << back;
    }
  }
}

TEST(FromPixels, TheOnlyPixelThatIsNotOpaqueIsFoundAnywhere) {
  constexpr int kWidth = 300;
  AtEveryLevel([] {
    std::vector<uint8_t> pixels(4 * kWidth, 255);
    for (size_t x = 0; x < kWidth; ++x) {
      pixels[4 * x + 3] = 0;
      const TestImage image(
          omb_frompixels(OMB_PIXELS_RGBA, kWidth, 1, pixels.data(), 4 * kWidth, 0x102030));
      for (int i = 0; i < kWidth; ++i) {
        ASSERT_EQ(image.Pixel(i, 0), i == static_cast<int>(x) ? Rgb(0x30, 0x20, 0x10) : 0xFFFFFFu)
            << x << ' ' << i;
      }
      pixels[4 * x + 3] = 255;
    }
  });
}

TEST(ToPixels, EveryDepthInEveryFormat) {
  for (const int depth : {1, 4, 8, 16, 24, 32}) {
    for (const int width : {1, 7, 8, 40, 42, 1501}) {
      for (const int table : {0, 1, 2}) {
        ImageBuilder builder(depth, width, 3);
        if (table == 1) builder.CoreHeader();
        // Varied colors, levels, and levels that are the indices.
        if (depth <= 8) {
          std::vector<uint32_t> colors = GrayRamp(1 << depth);
          if (table == 0) colors = VariedColors(1 << depth, 3);
          if (table == 1) std::reverse(colors.begin(), colors.end());
          builder.Colors(colors);
        }
        builder.Filler(0x5A).Pixels(Noise(depth == 32 ? 0xFFFFFFFF : 1u << depth, 9));
        const TestImage image = builder.Build();
        TestImage converted = image.Clone();
        ASSERT_EQ(omb_transformat(converted.ref()), 1u);
        // The header of a core image keeps its depth at the place where this is looked for.
        if (depth > 8 && depth != 24 && table == 1) continue;
        const std::vector<uint32_t> colors = converted.Colors();
        for (const uint32_t format : kFormats) {
          Array array(format, width, 3, width == 42);
          ASSERT_EQ(omb_topixels(image.get(), format, array.top, array.stride), 1u);
          EXPECT_TRUE(array.OthersAreUntouched());
          for (int i = 0; i < 3 * width; ++i) {
            const uint32_t color = colors[static_cast<size_t>(i)];
            const int gray =
                format == OMB_PIXELS_BIT ? (Gray(color) >= 128 ? 255 : 0) : Gray(color);
            const bool is_gray = format == OMB_PIXELS_BIT || format == OMB_PIXELS_GRAY;
            ASSERT_EQ(array.Color(i % width, i / width), is_gray ? Rgb(gray, gray, gray) : color)
                << depth << " bits to " << format << ", pixel " << i;
            if (format >= OMB_PIXELS_BGRA) {
              ASSERT_EQ(array.Pixel(i % width, i / width)[3], 255);
            }
          }
          if (format == OMB_PIXELS_BIT && width % 8 != 0) {
            EXPECT_EQ(array.top[array.row - 1] & (0xFF >> width % 8), 0);
          }
        }
      }
    }
  }
}

// What no cache holds is written in another way.
TEST(HostPixels, RowsOfLargeImagesAreThoseOfSmallOnes) {
  constexpr int kWidth = 2731, kHeight = 2111, kDistinct = 4;
  const struct {
    int depth;
    std::vector<uint32_t> formats;
  } cases[] = {{8, {OMB_PIXELS_BGRA}}, {24, {OMB_PIXELS_GRAY, OMB_PIXELS_RGB, OMB_PIXELS_BGRA}}};
  for (const auto& [depth, formats] : cases) {
    const TestImage few =
        ImageBuilder(depth, kWidth, kDistinct).Pixels(Noise(1u << depth, 3)).Build();
    const DibView few_rows = *DibView::Open(few.get());
    const TestImage many(omb_newdib(kWidth, kHeight, static_cast<uint16_t>(depth)));
    const Dib many_rows = *Dib::Open(many.get());
    for (int y = 0; y < kHeight; ++y) {
      std::memcpy(many_rows.row(y), few_rows.row(y % kDistinct), many_rows.stride());
    }
    for (auto set = simd::Supported(); *set != nullptr; ++set) {
      simd::Use(*set);
      for (const uint32_t format : formats) {
        // Down, against the order of the image's rows.
        Array small(format, kWidth, kDistinct, false), large(format, kWidth, kHeight, false);
        ASSERT_EQ(omb_topixels(few.get(), format, small.top, small.stride), 1u);
        ASSERT_EQ(omb_topixels(many.get(), format, large.top, large.stride), 1u);
        EXPECT_TRUE(large.OthersAreUntouched());
        const TestImage small_back(
            omb_frompixels(format, kWidth, kDistinct, small.top, small.stride, 0));
        const TestImage large_back(
            omb_frompixels(format, kWidth, kHeight, large.top, large.stride, 0));
        const DibView small_rows = *DibView::Open(small_back.get());
        const DibView large_rows = *DibView::Open(large_back.get());
        for (int y = 0; y < kHeight; ++y) {  // as stored, from the bottom up
          const int k = y % kDistinct;
          ASSERT_EQ(std::memcmp(large.top + (kHeight - 1 - y) * large.stride,
                                small.top + (kDistinct - 1 - k) * small.stride, large.row),
                    0)
              << (*set)->name << ' ' << depth << ' ' << format << ' ' << y;
          ASSERT_EQ(std::memcmp(large_rows.row(y), small_rows.row(k), large_rows.stride()), 0)
              << (*set)->name << ' ' << depth << ' ' << format << ' ' << y;
        }
      }
    }
  }
  simd::Use(nullptr);
}

TEST(HostPixels, RefuseWhatCannotBe) {
  uint8_t pixels[64] = {};
  constexpr intptr_t kMost = std::numeric_limits<intptr_t>::max();
  const struct {
    uint32_t format;
    int32_t width, height;
    intptr_t stride;
  } cases[] = {
      {0, 4, 4, 16},
      {2, 4, 4, 16},
      {26, 4, 4, 16},
      {0x80000018, 4, 4, 16},
      {24, 0, 4, 16},
      {24, 4, 0, 16},
      {24, -4, 4, 16},
      {24, 4, -4, 16},
      {24, 4, 4, 11},
      {24, 4, 4, -11},
      {24, 4, 4, 0},
      {1, 9, 4, 1},
      {24, 4, 4, kMost},
      {24, 4, 4, -kMost - 1},
      {32, std::numeric_limits<int32_t>::max(), 1, kMost},
      {8, 1 << 16, 1 << 16, 1 << 16},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(omb_frompixels(c.format, c.width, c.height, pixels, c.stride, 0), nullptr);
    const TestImage image = ImageBuilder(24, 4, 4).Build();
    if (c.width == 4 && c.height == 4) {
      EXPECT_EQ(omb_topixels(image.get(), c.format, pixels, c.stride), 0u) << c.stride;
    }
  }
  EXPECT_EQ(omb_frompixels(24, 4, 4, nullptr, 12, 0), nullptr);
  const TestImage image = ImageBuilder(24, 4, 4).Build();
  EXPECT_EQ(omb_topixels(image.get(), 24, nullptr, 12), 0u);
  EXPECT_EQ(omb_topixels(nullptr, 24, pixels, 12), 0u);
  EXPECT_EQ(omb_topixels(ImageBuilder(24, 4, -4).Build().get(), 24, pixels, 12), 0u);
  EXPECT_EQ(pixels[0], 0);
}

TEST(SetHeader, PaletteAndResolution) {
  const uint8_t colors[] = {1, 2, 3, 9, 4, 5, 6, 9};
  for (const bool core : {false, true}) {
    ImageBuilder builder(4, 3, 2);
    if (core) builder.CoreHeader();
    TestImage image = builder.Filler(7).Build();
    EXPECT_EQ(omb_setpalette(image.get(), colors, 2), 1u);
    EXPECT_EQ(image.Color(0), Rgb(3, 2, 1));
    EXPECT_EQ(image.Color(1), Rgb(6, 5, 4));
    EXPECT_EQ(image.Color(2), Rgb(34, 34, 34));
    if (!core) {
      EXPECT_EQ(image.raw()[43], 0);
      EXPECT_EQ(image.raw()[51], 7);
    }
    const std::vector<uint8_t> before = image.Bytes();
    EXPECT_EQ(omb_setpalette(image.get(), colors, 17), 0u);
    EXPECT_EQ(omb_setpalette(image.get(), nullptr, 1), 0u);
    EXPECT_EQ(omb_setresolution(image.get(), -1, 5), 0u);
    EXPECT_EQ(omb_setresolution(image.get(), 5, -1), 0u);
    EXPECT_EQ(image.Bytes(), before);
    EXPECT_EQ(omb_setresolution(image.get(), 11811, 5906), core ? 0u : 1u);
    if (!core) {
      EXPECT_EQ(LoadU32(image.raw() + 24), 11811u);
      EXPECT_EQ(LoadU32(image.raw() + 28), 5906u);
    }
  }
}

}  // namespace
}  // namespace ombrilo::test
