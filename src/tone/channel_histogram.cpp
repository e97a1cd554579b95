// omb_getchannelhistogram: the 256 counters of one channel, or of the gray value.
//
// Gray mode also makes what it reads gray: the table entries that pixels use, or the pixels.
#include <algorithm>
#include <cstring>

#include "core/color_table.h"
#include "core/packed_dib.h"
#include "core/pixels.h"
#include "rows/row_functions.h"
#include "tone/histogram.h"

namespace ombrilo {

namespace {

constexpr int32_t kGray = 4;  // 1 red, 2 green, 3 blue

// Width and height are cut to 16 bits, and rows are as far apart as the cut width says. Only an
// image that has no rows at all can have more cut rows than rows; the pixels of those count as 0.
struct CutImage {
  explicit CutImage(const Dib& image)
      : dib(image),
        width(static_cast<uint16_t>(image.header().width)),
        height(static_cast<uint16_t>(image.header().height)),
        stride(static_cast<size_t>(StrideOf(width, image.bit_count()))),
        rows(image.pixel_rows() == 0 ? 0 : height),
        missing(rows == 0 ? uint32_t{width} * height : 0) {}

  uint8_t* row(uint32_t y) const { return dib.rows() + y * stride; }

  const Dib& dib;
  const uint16_t width, height;
  const size_t stride;
  const uint32_t rows;     // that lie in the block
  const uint32_t missing;  // pixels that do not
};

uint8_t GrayOf(const uint8_t* bgr) {
  uint8_t gray;
  rows::Active().gray_percent(bgr, 1, &gray);
  return gray;
}

// What a pixel of this index adds to; in gray mode its table entry becomes gray.
uint8_t Measure(const Dib& dib, uint32_t index, int32_t channel) {
  uint8_t bgr[3];
  ReadColors(dib, index, 1, bgr);
  if (channel != kGray) return bgr[3 - channel];
  const uint8_t gray = GrayOf(bgr);
  const uint8_t entry[3] = {gray, gray, gray};
  WriteColors(dib, index, 1, entry);
  return gray;
}

void CountIndexed(const CutImage& image, int32_t channel, uint32_t* counters) {
  const Dib& dib = image.dib;
  const uint16_t bit_count = dib.bit_count();
  const size_t full_table = size_t{ColorsOfDepth(bit_count)} * dib.header().table_step();
  // Gray mode writes into the table while it counts. Entries past a short table lie over the
  // pixels, so that there each pixel has to see what the ones before it wrote.
  if (channel == kGray && dib.header().table_size() < full_table) {
    for (uint32_t y = 0; y < image.rows; ++y) {
      for (uint32_t x = 0; x < image.width; ++x) {
        ++counters[Measure(dib, GetIndex(image.row(y), bit_count, x), channel)];
      }
    }
    if (image.missing != 0) counters[Measure(dib, 0, channel)] += image.missing;
    return;
  }
  Histogram indices;
  for (uint32_t y = 0; y < image.rows; ++y) {
    ForEachIndexRun(image.row(y), bit_count, image.width,
                    [&](size_t, const uint8_t* run, size_t count) { indices.Add(run, count); });
  }
  for (uint32_t i = 0; i < ColorsOfDepth(bit_count); ++i) {
    const uint32_t count = indices[i] + (i == 0 ? image.missing : 0);
    if (count != 0) counters[Measure(dib, i, channel)] += count;
  }
}

void CountTrueColor(const CutImage& image, int32_t channel, uint32_t* counters) {
  Histogram values;
  for (uint32_t y = 0; y < image.rows; ++y) {
    uint8_t* row = image.row(y);
    if (channel != kGray) {
      values.Add(row + 3 - channel, image.width, 3);
      continue;
    }
    uint8_t gray[1024];
    for (size_t x = 0; x < image.width; x += sizeof gray) {
      const size_t count = std::min(sizeof gray, image.width - x);
      rows::Active().gray_percent(row + 3 * x, count, gray);
      rows::Active().spread(gray, count, row + 3 * x);
      values.Add(gray, count);
    }
  }
  for (size_t i = 0; i < 256; ++i) counters[i] = values[i];
  counters[0] += image.missing;
}

}  // namespace

}  // namespace ombrilo

int32_t omb_getchannelhistogram(PackedDib* image, int32_t* counters, int32_t channel) {
  using namespace ombrilo;
  if (image == nullptr || counters == nullptr) return 0;
  // Before anything else is looked at: a refused image leaves zeroed counters.
  std::memset(counters, 0, 256 * sizeof *counters);
  const auto dib = Dib::Open(image);
  if (!dib || !(dib->indexed() || dib->bit_count() == 24)) return 0;

  const CutImage cut(*dib);
  if (channel < 1 || channel > kGray) {
    // 1-bit images refuse an unknown channel at their first pixel, the others count nothing.
    return dib->bit_count() != 1 || cut.width == 0 || cut.height == 0;
  }
  uint32_t counts[256] = {};
  if (dib->indexed()) {
    CountIndexed(cut, channel, counts);
  } else {
    CountTrueColor(cut, channel, counts);
  }
  std::memcpy(counters, counts, sizeof counts);
  return 1;
}
