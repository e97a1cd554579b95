#include "core/nearest_entry.h"

#include <gtest/gtest.h>

#include "core/packed_dib.h"
#include "support/naive.h"

namespace ombrilo::test {
namespace {

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

// Close colors first, for which narrow cells stay in use where many colors are announced; then
// every cell in turn with colors from all over it, for which they do not. Lists of the gray ramp
// fill their room, so that searching begins anew, more than once.
TEST(NearestEntry, EqualsThePlainSearchAtEveryLevel) {
  constexpr size_t kClose = 30000, kCount = kClose + 60000;
  std::vector<uint8_t> colors;
  for (uint32_t i = 0; i < kCount; ++i) {
    const uint32_t noise = i * 0x9E3779B1u >> 8;
    const uint32_t color = i < kClose ? 0x303030 + (noise & 0x1F1F1F) : noise;
    for (const int shift : {0, 8, 16}) colors.push_back(static_cast<uint8_t>(color >> shift));
  }
  for (const std::vector<uint32_t>& table : Palettes()) {
    const int bits = table.size() == 2 ? 1 : table.size() == 16 ? 4 : 8;
    const TestImage image = ImageBuilder(bits, 1, 1).Colors(table).Build();
    const Palette palette = *MakeDIBPalette(*DibView::Open(image.get()));
    const std::vector<Bgr> entries = Naive(image).palette;
    std::vector<uint8_t> expected, found(kCount);
    for (size_t i = 0; i < 3 * kCount; i += 3) {
      expected.push_back(
          static_cast<uint8_t>(Nearest(entries, {colors[i], colors[i + 1], colors[i + 2]})));
    }
    for (const uint64_t announced :
         {uint64_t{1}, uint64_t{kCount}, uint64_t{simd::SquaresLists::kManyColors}}) {
      NearestEntry nearest(announced);
      ASSERT_TRUE(nearest);
      AtEveryLevel([&] {
        nearest.Learn(palette);
        nearest.Find(colors.data(), 3, kCount, found.data());
        ASSERT_EQ(found, expected) << table.size() << " entries";
        ASSERT_EQ(nearest.Find(colors[0], colors[1], colors[2]), expected[0]);
      });
    }
  }
}

}  // namespace
}  // namespace ombrilo::test
