#include "core/nearest_entry.h"

#include <gtest/gtest.h>

#include "support/naive.h"

namespace ombrilo::test {
namespace {

Palette PaletteOf(const std::vector<uint32_t>& rgb) {
  Palette palette = {};
  palette.count = static_cast<int>(rgb.size());
  for (size_t i = 0; i < rgb.size(); ++i) {
    for (int c = 0; c < 3; ++c) palette.bgr[i][c] = static_cast<uint8_t>(rgb[i] >> 8 * c);
  }
  return palette;
}

// Palettes that try the search: ties everywhere, crowds in one cell, corners only, one color.
std::vector<std::vector<uint32_t>> Palettes() {
  std::vector<std::vector<uint32_t>> all = {
      {0xFFFFFF, 0x000000},
      {0x808080, 0x808080},
      GrayRamp(16),
      GrayRamp(256),
      VariedColors(16, 1),
      VariedColors(256, 2),
      std::vector<uint32_t>(256, 0x123456),
  };
  std::vector<uint32_t> crowd = VariedColors(256, 3), grid;
  for (uint32_t& color : crowd) color = (color & 0x070707) | 0x404040;
  for (int i = 0; i < 256; ++i) grid.push_back(Rgb(i / 64 * 85, i / 16 % 4 * 85, i % 4 * 85));
  all.push_back(crowd);
  all.push_back(grid);
  return all;
}

TEST(NearestEntry, EqualsThePlainSearch) {
  for (const std::vector<uint32_t>& colors : Palettes()) {
    const Palette palette = PaletteOf(colors);
    std::vector<Bgr> entries;
    for (int i = 0; i < palette.count; ++i) {
      const uint8_t* bgr = palette.bgr[i];
      entries.push_back({bgr[0], bgr[1], bgr[2]});
    }
    NearestEntry nearest(palette);
    ASSERT_TRUE(nearest);
    for (uint32_t i = 0; i < 60000; ++i) {
      // Every cell in turn with colors from all over it, then again from the memo.
      const uint32_t color = i / 2 * 0x9E3779B1u >> 8;
      const int blue = color & 255, green = color >> 8 & 255, red = color >> 16 & 255;
      ASSERT_EQ(nearest.Find(static_cast<uint8_t>(blue), static_cast<uint8_t>(green),
                             static_cast<uint8_t>(red)),
                Nearest(entries, {blue, green, red}));
    }
  }
}

// 256 equal entries are all candidates of every cell: the pool of candidates fills up and is begun
// anew, and still the lowest index answers.
TEST(NearestEntry, LowestIndexWinsTies) {
  std::vector<uint32_t> colors(256, 0x404040);
  colors[7] = colors[200] = 0xC0C0C0;
  NearestEntry nearest(PaletteOf(colors));
  for (int red = 0; red < 256; red += 5) {
    for (int green = 0; green < 256; green += 5) {
      for (int blue = 0; blue < 256; blue += 5) {
        const int sum = red + green + blue;
        ASSERT_EQ(nearest.Find(static_cast<uint8_t>(blue), static_cast<uint8_t>(green),
                               static_cast<uint8_t>(red)),
                  sum > 3 * 128 ? 7 : 0);
      }
    }
  }
}

}  // namespace
}  // namespace ombrilo::test
