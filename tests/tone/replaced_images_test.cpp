// omb_gray, omb_extractcolor and omb_binary: the new block and its pixels.
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

TEST(ReplacedImages, NegativeSizesGiveBlocksWithoutRows) {
  for (const Conversion& conversion : Conversions()) {
    for (const auto& [width, height] : {std::pair{7, -2}, {7, 0}, {-7, 2}, {0, 5}}) {
      TestImage image = ImageBuilder(24, 1, 1)
                            .Field(4, static_cast<uint32_t>(width))
                            .Field(8, static_cast<uint32_t>(height))
                            .Build();
      EXPECT_EQ(conversion.call(image.ref()), conversion.result);
      EXPECT_EQ(image.bit_count(), conversion.bit_count);
      EXPECT_EQ(image.height(), height);
      EXPECT_EQ(image.Bytes().size(), 40u + (4u << conversion.bit_count));
      EXPECT_EQ(image.Color(1), conversion.color(1));
    }
  }
}

TEST(Binary, IndexedSourcesReadColorsFromByte40) {
  for (const uint32_t size_field : {40u, 12u, 41u}) {
    for (const int bits : {4, 8}) {
      for (const int colors : {3, 1 << bits}) {
        if (colors == 3 && size_field != 40) continue;
        TestImage image = ImageBuilder(bits, 1035, 2)
                              .CoreHeader(size_field)
                              .Colors(VariedColors(colors, 31))
                              .Pixels(Noise(1u << bits, 32))
                              .Filler(0x77)
                              .Build();
        const TestImage before = image.Clone();
        EXPECT_EQ(omb_binary(image.ref(), 120), 1u);
        ASSERT_EQ(image.bit_count(), 1);
        for (int y = 0; y < 2; ++y) {
          for (int x = 0; x < 1035; ++x) {
            const uint8_t* entry = before.raw() + 40 + 4 * before.Pixel(x, y);
            EXPECT_EQ(image.Pixel(x, y), White(Rgb(entry[2], entry[1], entry[0]), 120));
          }
        }
        EXPECT_EQ(image.Color(1), 0xFFFFFFu);
        EXPECT_EQ(image.Bytes().back(), 0) << "bits behind the last pixel are not written";
      }
    }
  }
}

// The source's pixels and its own table, thresholded; then a two-entry table's bytes and the rows'
// are copied from behind the header, whatever the length of the source's table.
TEST(Binary, OneBitSources) {
  for (const uint32_t size_field : {40u, 12u, 41u}) {
    for (const size_t colors : {2u, 1u, 5u, 300u}) {
      if (colors != 2 && size_field != 40) continue;
      for (const int threshold : {127, 128, 129, 50}) {
        std::vector<uint32_t> table = {0x808080, 0x323232, 0x818181, 0x7F7F7F, 0x102030};
        table.resize(colors, 0xFEDCBA);
        TestImage image = ImageBuilder(1, 37, 3)
                              .CoreHeader(size_field)
                              .Colors(table)
                              .Pixels(Noise(2, 33))
                              .Filler(0xA5)
                              .Build();
        std::vector<uint8_t> body = image.Bytes();
        body.erase(body.begin(), body.begin() + size_field);
        const size_t step = size_field == 40 ? 4 : 3;
        for (size_t i = 0; i < colors; ++i) {
          std::fill_n(&body[step * i], 3, White(table[i], threshold, 128) ? 255 : 0);
        }
        body.resize(2 * step + 3 * 8);  // what the block does not have is 0
        EXPECT_EQ(omb_binary(image.ref(), threshold), 1u);
        const std::vector<uint8_t> result = image.Bytes();
        EXPECT_EQ(std::vector<uint8_t>(result.begin() + size_field, result.end()), body);
        EXPECT_EQ(omb_DIBNumColors(image.get()), 2u);
      }
    }
  }
}

}  // namespace
}  // namespace ombrilo::test
