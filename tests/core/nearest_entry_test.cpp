#include "core/nearest_entry.h"

#include <gtest/gtest.h>

#include "rows/row_functions.h"
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
      std::vector<uint32_t>(256, 0x123456),  // the lowest of equals
  };
  std::vector<uint32_t> crowd = VariedColors(256, 3), grid;
  for (uint32_t& color : crowd) color = (color & 0x070707) | 0x404040;
  for (int i = 0; i < 256; ++i) grid.push_back(Rgb(i / 64 * 85, i / 16 % 4 * 85, i % 4 * 85));
  all.push_back(crowd);
  all.push_back(grid);
  return all;
}

// Every cell in turn with colors from all over it. Lists of the gray ramp fill their room, so that
// searching begins anew, more than once.
TEST(NearestEntry, EqualsThePlainSearchAtEveryLevel) {
  constexpr size_t kCount = 60000;
  std::vector<uint8_t> colors;
  for (uint32_t i = 0; i < kCount; ++i) {
    const uint32_t color = i * 0x9E3779B1u;
    for (const int shift : {8, 16, 24}) colors.push_back(static_cast<uint8_t>(color >> shift));
  }
  for (const std::vector<uint32_t>& table : Palettes()) {
    const Palette palette = PaletteOf(table);
    std::vector<Bgr> entries;
    for (int i = 0; i < palette.count; ++i) {
      const uint8_t* bgr = palette.bgr[i];
      entries.push_back({bgr[0], bgr[1], bgr[2]});
    }
    std::vector<uint8_t> expected, found(kCount);
    for (size_t i = 0; i < 3 * kCount; i += 3) {
      expected.push_back(
          static_cast<uint8_t>(Nearest(entries, {colors[i], colors[i + 1], colors[i + 2]})));
    }
    NearestEntry nearest;
    ASSERT_TRUE(nearest);
    for (int level = 0; simd::Supported()[level] != nullptr; ++level) {
      simd::Use(simd::Supported()[level]);
      nearest.Learn(palette);
      nearest.Find(colors.data(), 3, kCount, found.data());
      ASSERT_EQ(found, expected) << table.size() << " entries, level " << level;
      ASSERT_EQ(nearest.Find(colors[0], colors[1], colors[2]), expected[0]);
    }
  }
  simd::Use(nullptr);
}

}  // namespace
}  // namespace ombrilo::test
