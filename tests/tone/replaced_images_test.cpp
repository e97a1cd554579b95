// omb_gray, omb_extractcolor and omb_binary of true-color images: the new block and its pixels.
#include <gtest/gtest.h>

#include "support/image.h"

namespace ombrilo::test {
namespace {

struct Conversion {
  std::string name;
  std::function<uintptr_t(PackedDib**)> call;
  uint32_t result;
  int bit_count;
  std::function<uint32_t(uint32_t)> pixel;
  std::function<uint32_t(int)> color;
};

// The comparison as it is defined: double precision, rounded to single.
bool White(uint32_t rgb, int threshold, int first_white_tie = 129) {
  const double gray = 0.59 * (rgb >> 8 & 255) + 0.3 * (rgb >> 16 & 255) + 0.11 * (rgb & 255);
  const float g = static_cast<float>(gray), t = static_cast<float>(threshold);
  return g > t || (g == t && threshold >= first_white_tie);
}

std::vector<Conversion> Conversions() {
  std::vector<Conversion> all;
  all.push_back({"gray", omb_gray, 1, 8,
                 [](uint32_t rgb) {
                   return (59 * (rgb >> 8 & 255) + 30 * (rgb >> 16) + 11 * (rgb & 255)) / 100;
                 },
                 [](int i) { return static_cast<uint32_t>(i) * 0x010101; }});
  for (const uint32_t channel : {1u, 2u, 3u}) {
    const uint32_t shift = 24 - 8 * channel;
    // The result is 0 although the image has been replaced.
    all.push_back({"extract " + std::to_string(channel),
                   [=](PackedDib** image) { return omb_extractcolor(image, channel); }, 0, 8,
                   [=](uint32_t rgb) { return rgb >> shift & 255; },
                   [=](int i) { return static_cast<uint32_t>(i) << shift; }});
  }
  for (const int threshold : {INT32_MIN, -1, 0, 1, 100, 127, 128, 129, 200, 254, 255, INT32_MAX}) {
    all.push_back({"binary " + std::to_string(threshold),
                   [=](PackedDib** image) { return omb_binary(image, threshold); }, 1, 1,
                   [=](uint32_t rgb) { return White(rgb, threshold); },
                   [](int i) { return i == 0 ? 0u : 0xFFFFFFu; }});
  }
  return all;
}

// Any color, every gray, and colors whose weighted sum is exactly a whole number.
uint32_t Scene(int x, int y) {
  const uint32_t gray = static_cast<uint32_t>(x) & 255;
  if (y == 0) return gray * 0x010101;
  const uint32_t noise = Noise(1 << 24, 21)(x, y);
  return y == 1 ? noise
                : Rgb(static_cast<int>(gray / 3 * 3), static_cast<int>(gray),
                      static_cast<int>(noise & 3) * 50);
}

TEST(ReplacedImages, TrueColorSources) {
  for (const Conversion& conversion : Conversions()) {
    for (const uint32_t size_field : {40u, 12u, 50u}) {
      for (const int width : {1, 9, 259, 1100}) {
        SCOPED_TRACE(conversion.name + ", header " + std::to_string(size_field));
        ImageBuilder source(24, width, 3);
        source.CoreHeader(size_field).Pixels(Scene).Filler(0x5A);
        if (size_field == 40) source.Colors({1, 2, 3}).Field(20, 77).Field(24, 2835).Field(36, 3);
        TestImage image = source.Build();
        std::vector<uint32_t> colors;
        for (int i = 0; i < 1 << conversion.bit_count; ++i) colors.push_back(conversion.color(i));
        ImageBuilder wanted(conversion.bit_count, width, 3);
        wanted.CoreHeader(size_field).Colors(colors).Pixels([&](int x, int y) {
          return conversion.pixel(Scene(x, y));
        });
        if (size_field == 40) {
          wanted.Field(20, 77).Field(24, 2835).Field(32, conversion.bit_count == 1 ? 2 : 0);
        }
        EXPECT_EQ(conversion.call(image.ref()), conversion.result);
        EXPECT_EQ(image.Bytes(), wanted.Build().Bytes());
      }
    }
  }
}

TEST(Binary, TiesAtOneBitAreWhiteFrom128On) {
  const std::vector<uint32_t> table = {0x808080, 0x7F7F7F};
  for (const int threshold : {126, 127, 128, 129}) {
    TestImage image = ImageBuilder(1, 37, 3).Colors(table).Pixels(Noise(2, 33)).Build();
    const std::vector<uint32_t> pixels = image.Pixels();
    EXPECT_EQ(omb_binary(image.ref(), threshold), 1u);
    EXPECT_EQ(image.Pixels(), pixels);
    for (int i = 0; i < 2; ++i) {
      const bool white = White(table[static_cast<size_t>(i)], threshold, 128);
      EXPECT_EQ(image.Color(i), white ? 0xFFFFFFu : 0u) << threshold;
    }
  }
}

}  // namespace
}  // namespace ombrilo::test
