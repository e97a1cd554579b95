// omb_getchannelhistogram: the 256 counters of one channel, or of the gray value.
//
// Gray mode also makes what it reads gray: the table entries that pixels use, or the pixels.
#include <algorithm>
#include <cstring>

#include "core/color_table.h"
#include "core/pixel_rows.h"
#include "core/pixels.h"
#include "rows/row_functions.h"
#include "tone/color_channel.h"
#include "tone/histogram.h"

namespace ombrilo {

namespace {

// The counter for pixels of this index, whose table entry becomes gray.
uint8_t MeasureGray(const Dib& dib, uint32_t index) {
  uint8_t bgr[3], gray;
  ReadColors(dib, index, 1, bgr);
  simd::Active().gray_percent(bgr, 1, &gray);
  simd::Active().spread(&gray, 1, bgr);
  WriteColors(dib, index, 1, bgr);
  return gray;
}

// Cutting sizes can give rows to an image that has none. Their pixels count as 0.
uint32_t MissingPixels(const PixelRows& image) {
  return static_cast<uint32_t>(image.width) *
         static_cast<uint32_t>(image.height - image.rows_inside());
}

void CountIndexed(const Dib& dib, const PixelRows& image, uint32_t channel, uint32_t* counters) {
  const size_t width = static_cast<size_t>(image.width);
  Histogram indices;
  for (int32_t y = 0; y < image.rows_inside(); ++y) {
    ForEachIndexRun(image.row(y), image.bit_count, width,
                    [&](size_t, const uint8_t* run, size_t count) { indices.Add(run, count); });
  }

  const uint32_t colors = ColorsOfDepth(image.bit_count);
  const uint32_t table_entries = dib.header().table_size() / dib.header().table_step();
  uint32_t beyond_table = 0;
  for (uint32_t i = table_entries; i < colors; ++i) beyond_table |= indices[i];
  // Entries past a short table lie over the pixels. Gray mode writes into them while it counts, and
  // each pixel has to see what the ones before it wrote.
  if (channel == OMB_CHANNEL_GRAY && beyond_table != 0) {
    for (int32_t y = 0; y < image.rows_inside(); ++y) {
      for (size_t x = 0; x < width; ++x) {
        ++counters[MeasureGray(dib, GetIndex(image.row(y), image.bit_count, x))];
      }
    }
    return;
  }
  indices.AddTimes(0, MissingPixels(image));
  uint8_t bgr[256][3], gray[256];
  ReadColors(dib, 0, colors, bgr[0]);
  simd::Active().gray_percent(bgr[0], colors, gray);
  for (uint32_t i = 0; i < colors; ++i) {
    const uint32_t count = indices[i];
    if (channel != OMB_CHANNEL_GRAY) {
      counters[bgr[i][ChannelByte(channel)]] += count;
    } else if (count != 0) {
      counters[gray[i]] += count;
      std::memset(bgr[i], gray[i], 3);
    }
  }
  // Colors that no pixel has are written as they were, those past a short table included.
  if (channel == OMB_CHANNEL_GRAY) WriteColors(dib, 0, colors, bgr[0]);
}

void CountTrueColor(const PixelRows& image, uint32_t channel, uint32_t* counters) {
  const size_t width = static_cast<size_t>(image.width);
  Histogram values;
  for (int32_t y = 0; y < image.rows_inside(); ++y) {
    uint8_t* row = image.row(y);
    if (channel != OMB_CHANNEL_GRAY) {
      values.Add(row + ChannelByte(channel), width, 3);
      continue;
    }
    alignas(simd::kCacheLine) uint8_t gray[kRun];
    for (size_t x = 0; x < width; x += kRun) {
      const size_t count = std::min(kRun, width - x);
      simd::Active().gray_percent(row + 3 * x, count, gray);
      simd::Active().spread(gray, count, row + 3 * x);
      values.Add(gray, count);
    }
  }
  values.AddTimes(0, MissingPixels(image));
  for (size_t i = 0; i < 256; ++i) counters[i] = values[i];
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

  const PixelRows cut = PixelRows::Of16Bits(*dib);
  const auto number = static_cast<uint32_t>(channel);
  if (!IsChannel(number) && number != OMB_CHANNEL_GRAY) {
    // 1-bit images refuse an unknown channel at their first pixel, the others count nothing.
    return dib->bit_count() != 1 || cut.width == 0 || cut.height == 0;
  }
  uint32_t counts[256] = {};
  if (dib->indexed()) {
    CountIndexed(*dib, cut, number, counts);
  } else {
    CountTrueColor(cut, number, counts);
  }
  std::memcpy(counters, counts, sizeof counts);
  return 1;
}
