// omb_autocontrast: all channels stretched between one pair of levels.
//
// An indexed image is measured by its pixels' colors, and each pixel goes to the entry that is
// nearest to its stretched color; the color table stays.
#include <algorithm>

#include "core/color_table.h"
#include "core/colors_in_place.h"
#include "core/nearest_entry.h"
#include "core/pixels.h"
#include "rows/row_functions.h"
#include "tone/level_table.h"
#include "tone/levels.h"

namespace ombrilo {

namespace {

Levels Widest(const Levels (&channels)[3]) {
  Levels widest = {255, 0};
  for (const Levels& own : channels) {
    widest.low = std::min(widest.low, own.low);
    widest.high = std::max(widest.high, own.high);
  }
  return widest;
}

void StretchTrueColor(const Dib& dib, double low, double high) {
  Levels channels[3];
  FindLevels(dib, low, high, channels);
  const Levels levels = Widest(channels);
  uint8_t table[256];
  levels.FillTable(table);
  const LevelTable stretched(table, {levels.low, 0, 255, levels.high - levels.low});
  ChangePixelColors(dib, [&](uint8_t* bgr, size_t colors) { stretched.Apply(bgr, 3 * colors); });
}

// The levels of the pixels' colors.
Levels LevelsOfIndexed(const DibView& dib, double low, double high) {
  // At 1 bit only the first stored row is counted, although the number of samples is that of the
  // whole image: such an image usually stays as it is.
  const int32_t rows = dib.bit_count() == 1 ? std::min(dib.pixel_rows(), 1) : dib.pixel_rows();
  Histogram indices;
  indices.AddIndices(dib, rows);
  const uint32_t entries = ColorsOfDepth(dib.bit_count());
  uint8_t colors[256][3];
  ReadColorsAtByte40(dib, entries, colors[0]);
  Levels levels[3];
  for (size_t c = 0; c < 3; ++c) {
    Histogram channel;
    for (uint32_t i = 0; i < entries; ++i) channel.AddTimes(colors[i][c], indices[i]);
    levels[c] = FindLevels(channel, PixelCount(dib.header()), low, high, UpperTest::kBelow);
  }
  return Widest(levels);
}

bool StretchIndexed(const Dib& dib, double low, double high) {
  const Palette palette = *MakeDIBPalette(dib);
  NearestEntry nearest(palette, static_cast<uint64_t>(palette.count));
  if (!nearest) return false;
  const Levels levels = LevelsOfIndexed(dib, low, high);
  if (levels.low == levels.high) return false;
  uint8_t stretched[256];
  levels.FillTable(stretched);
  // Entries past the table are pixels and change with them, so only those before the rows can be
  // mapped in advance. Colors are read four bytes apart from byte 40, on purpose also from a core
  // header's table.
  uint32_t fixed = 0;
  while (fixed < 256 && kInfoHeaderSize + 4 * fixed + 3 <= dib.prefix_size()) ++fixed;
  uint8_t colors[256][3], table[256] = {};
  ReadColorsAtByte40(dib, fixed, colors[0]);
  for (uint32_t i = 0; i < fixed; ++i) {
    for (uint8_t& channel : colors[i]) channel = stretched[channel];
  }
  nearest.Find(colors[0], 3, fixed, table);
  const auto map = [&](uint32_t index) {
    uint8_t bgr[3];
    dib.Read(kInfoHeaderSize + size_t{4} * index, bgr, 3);
    return nearest.Find(stretched[bgr[0]], stretched[bgr[1]], stretched[bgr[2]]);
  };
  const uint16_t bit_count = dib.bit_count();
  const auto apply_table = simd::Active().apply_table;
  for (int32_t y = 0; y < dib.pixel_rows(); ++y) {
    uint8_t* row = dib.row(y);
    if (bit_count == 8 && fixed == 256) {  // nearly always
      apply_table(row, static_cast<size_t>(dib.width()), table);
      continue;
    }
    ForEachIndexRun(row, bit_count, static_cast<size_t>(dib.width()),
                    [&](size_t first, uint8_t* indices, size_t count) {
                      uint8_t highest = 0;
                      for (size_t i = 0; i < count; ++i) highest = std::max(highest, indices[i]);
                      if (highest < fixed) {
                        apply_table(indices, count, table);
                        PackIndices(indices, bit_count, count, row + first * bit_count / 8);
                        return;
                      }
                      for (size_t i = 0; i < count; ++i) {
                        const uint8_t index = indices[i];
                        SetIndex(row, bit_count, first + i,
                                 index < fixed ? table[index] : map(index));
                      }
                    });
  }
  return true;
}

}  // namespace

}  // namespace ombrilo

uint32_t omb_autocontrast(PackedDib* image, double low, double high) {
  using namespace ombrilo;
  const auto dib = Dib::Open(image);
  if (!dib) return 0;
  if (dib->indexed()) return StretchIndexed(*dib, low, high);
  if (dib->bit_count() != 24) return 0;
  StretchTrueColor(*dib, low, high);
  return 1;
}
