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
#include "tone/levels.h"

namespace ombrilo {

namespace {

Levels SharedLevels(const Histogram (&channels)[3], int32_t samples, double low, double high,
                    UpperTest test) {
  Levels shared = {255, 0};
  for (const Histogram& channel : channels) {
    const Levels own = FindLevels(channel, samples, low, high, test);
    shared.low = std::min(shared.low, own.low);
    shared.high = std::max(shared.high, own.high);
  }
  return shared;
}

void StretchTrueColor(const Dib& dib, double low, double high) {
  Histogram channels[3];
  ChangePixelColors(dib, [&](const uint8_t* bgr, size_t colors) {
    for (size_t c = 0; c < 3; ++c) channels[c].Add(bgr + c, colors, 3);
  });
  uint8_t table[256];
  SharedLevels(channels, PixelCount(dib.header()), low, high, UpperTest::kAtMost).FillTable(table);
  const auto apply = rows::Active().apply_table;
  ChangePixelColors(dib, [&](uint8_t* bgr, size_t colors) { apply(bgr, 3 * colors, table); });
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
  Histogram channels[3];
  for (uint32_t i = 0; i < entries; ++i) {
    for (size_t c = 0; c < 3; ++c) channels[c].AddTimes(colors[i][c], indices[i]);
  }
  return SharedLevels(channels, PixelCount(dib.header()), low, high, UpperTest::kBelow);
}

class PixelMapper {
 public:
  PixelMapper(const Dib& dib, NearestEntry& nearest, Levels levels)
      : dib_(dib), nearest_(nearest), levels_(levels) {
    const uint32_t entries = ColorsOfDepth(dib.bit_count());
    // Colors are read four bytes apart from byte 40, on purpose also from a core header's table.
    const size_t before_rows =
        dib.prefix_size() < kInfoHeaderSize ? 0 : (dib.prefix_size() - kInfoHeaderSize + 1) / 4;
    fixed_ = static_cast<uint32_t>(std::min<size_t>(entries, before_rows));
    for (uint32_t i = 0; i < fixed_; ++i) map_[i] = Map(i);
    all_fixed_ = fixed_ == entries;
  }

  void MapRow(uint8_t* row) {
    const uint16_t bit_count = dib_.bit_count();
    const size_t width = static_cast<size_t>(dib_.width());
    if (all_fixed_) {
      ForEachIndexRun(row, bit_count, width, [&](size_t first, uint8_t* indices, size_t count) {
        rows::Active().apply_table(indices, count, map_);
        PackIndices(indices, bit_count, count, row + first * bit_count / 8);
      });
      return;
    }
    // Entries that lie over the pixels change with them, so each look-up sees the latest bytes.
    for (size_t x = 0; x < width; ++x) {
      const uint8_t index = GetIndex(row, bit_count, x);
      SetIndex(row, bit_count, x, index < fixed_ ? map_[index] : Map(index));
    }
  }

 private:
  uint8_t Map(uint32_t index) {
    uint8_t bgr[3];
    dib_.Read(kInfoHeaderSize + size_t{4} * index, bgr, 3);
    return nearest_.Find(levels_.Stretch(bgr[0]), levels_.Stretch(bgr[1]), levels_.Stretch(bgr[2]));
  }

  const Dib& dib_;
  NearestEntry& nearest_;
  const Levels levels_;
  uint8_t map_[256] = {};  // of the entries before the pixel rows
  uint32_t fixed_;
  bool all_fixed_;
};

bool StretchIndexed(const Dib& dib, double low, double high) {
  NearestEntry nearest(*MakeDIBPalette(dib));
  if (!nearest) return false;
  const Levels levels = LevelsOfIndexed(dib, low, high);
  if (levels.low == levels.high) return false;
  PixelMapper mapper(dib, nearest, levels);
  for (int32_t y = 0; y < dib.pixel_rows(); ++y) mapper.MapRow(dib.row(y));
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
