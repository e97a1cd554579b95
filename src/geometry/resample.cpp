#include "geometry/resample.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "core/palette.h"
#include "core/pixels.h"
#include "rows/row_functions.h"

namespace ombrilo {

namespace {

// Offsets derive from the new image's coordinate and the source's last column or row. Mixing the
// two is part of the contract: enlarging uses the border's offsets over most of the image.
CubicOffsets OffsetsFor(int32_t at, int32_t last) {
  CubicOffsets offsets = {{at < 1 ? 0 : -1, 0, at >= last ? 0 : 1, 2}};
  if (at >= last - 1) offsets.at[3] = offsets.at[2];
  return offsets;
}

template <int kBitCount>
void PlaceDepth(const int32_t* columns, int32_t column_move, const int32_t* rows, int32_t stride,
                int first, int end, Sampler::Tap* tap) {
  for (int i = first; i < end; ++i) {
    const PixelPlace place = PlaceOf<kBitCount>(columns[i] + column_move);
    tap->offset[i] = place.byte + (rows == nullptr ? 0 : rows[i] * stride);
    if (kBitCount != 24) tap->shift[i] = place.shift;
  }
}

PixelPlace PlaceAt(uint16_t bit_count, int32_t column) {
  switch (bit_count) {
    case 1:
      return PlaceOf<1>(column);
    case 4:
      return PlaceOf<4>(column);
    case 8:
      return PlaceOf<8>(column);
    default:
      return PlaceOf<24>(column);
  }
}

}  // namespace

Sampler::Sampler(const DibView& source, uint32_t mode) : source_(source), mode_(mode) {
  if (!Paints() || !source.indexed()) return;
  if (mode == kPoint) {
    for (uint32_t i = 0; i < 256; ++i) colors_[i] = i;
    return;
  }
  const Palette palette = *MakeDIBPalette(source);
  nearest_.emplace(palette);
  ready_ = static_cast<bool>(*nearest_);
  if (!ready_) return;
  const bool gray = palette.AllGray();
  channels_ = gray ? 1 : 3;
  for (int i = 0; i < 256; ++i) {
    const uint8_t* bgr = palette.bgr[i];
    colors_[i] = gray ? bgr[0] : static_cast<uint32_t>(bgr[0] | bgr[1] << 8 | bgr[2] << 16);
  }
  for (int level = 0; gray && level < 256; ++level) {
    const uint8_t v = static_cast<uint8_t>(level);
    gray_index_[level] = nearest_->Find(v, v, v);
  }
}

bool Sampler::Paints() const {
  return width() != 0 && height() != 0 && (source_.indexed() || source_.bit_count() == 24) &&
         mode_ >= kPoint && mode_ <= kBicubic;
}

// A sample that the operations' own corrections leave outside the source is clamped into it.
uint32_t Sampler::ColorAt(int32_t column, int32_t row) const {
  column = std::clamp(column, 0, width() - 1);
  row = std::clamp(row, 0, height() - 1);
  const PixelPlace place = PlaceAt(source_.bit_count(), column);
  const uint8_t* pixel = source_.row(row) + place.byte;
  if (source_.bit_count() == 24) {
    return static_cast<uint32_t>(pixel[0] | pixel[1] << 8 | pixel[2] << 16);
  }
  return colors_[static_cast<uint32_t>(*pixel >> place.shift) & ((1u << source_.bit_count()) - 1)];
}

uint32_t Sampler::SamplePixel(Position column, Position row, int32_t x, int32_t y) const {
  switch (mode_) {
    case kPoint:
      return ColorAt(column.whole, row.whole);
    case kBilinear:
      return BilinearColor(column, row);
    default:
      return BicubicColor(column, row, x, y);
  }
}

uint32_t Sampler::BilinearColor(Position column, Position row) const {
  // The last two columns and rows are blended with the fraction as it is.
  const int32_t ix = std::min(column.whole, width() - 2);
  const int32_t iy = std::min(row.whole, height() - 2);
  const uint32_t samples[4] = {ColorAt(ix, iy), ColorAt(ix + 1, iy), ColorAt(ix, iy + 1),
                               ColorAt(ix + 1, iy + 1)};
  const uint32_t* const taps[4] = {samples, samples + 1, samples + 2, samples + 3};
  uint32_t color;
  rows::Active().bilinear(taps, &column.fraction, &row.fraction, channels_, 1, &color);
  return color;
}

uint32_t Sampler::BicubicColor(Position column, Position row, int32_t x, int32_t y) const {
  const rows::RowFunctions& functions = rows::Active();
  float column_weights[4], row_weights[4];
  float* const across[4] = {column_weights, column_weights + 1, column_weights + 2,
                            column_weights + 3};
  float* const down[4] = {row_weights, row_weights + 1, row_weights + 2, row_weights + 3};
  functions.cubic_weights(&column.fraction, 1, across);
  functions.cubic_weights(&row.fraction, 1, down);

  const CubicOffsets column_offsets = ColumnOffsets(x);
  const CubicOffsets row_offsets = RowOffsets(y);
  // Corrections persist: a later sample starts from the coordinates that an earlier one left.
  int32_t ix = column.whole, iy = row.whole;
  float sums[4][3];
  for (int j = 0; j < 4; ++j) {
    const int32_t down_by = row_offsets.at[j];
    if (iy + down_by > height() - 1) iy = height() - down_by - 1;
    if (iy + down_by < 0) iy = -down_by;
    uint32_t samples[4];
    for (int k = 0; k < 4; ++k) {
      const int32_t right_by = column_offsets.at[k];
      // A reflection, on purpose unlike the rule for rows.
      if (ix + right_by > width() - 1) ix = width() - ix - 1;
      if (ix + right_by < 0) ix = -right_by;
      samples[k] = ColorAt(ix + right_by, iy + down_by);
    }
    const uint32_t* const taps[4] = {samples, samples + 1, samples + 2, samples + 3};
    functions.cubic_across(taps, across, channels_, 1, 1, sums[j]);
  }
  const float* const sum_rows[4] = {sums[0], sums[1], sums[2], sums[3]};
  uint32_t color;
  functions.cubic_down(sum_rows, down, channels_, 1, 1, &color);
  return color;
}

CubicOffsets Sampler::ColumnOffsets(int32_t x) const {
  CubicOffsets offsets = OffsetsFor(x, width() - 1);
  // At 24 bits alone, and for columns alone, the right edge has a rule of its own.
  if (source_.bit_count() == 24 && x >= width() - 2) {
    offsets.at[2] = 0;
    offsets.at[3] = 1;
  }
  return offsets;
}

CubicOffsets Sampler::RowOffsets(int32_t y) const { return OffsetsFor(y, height() - 1); }

int32_t Sampler::EndOfOffsets(int32_t x) const {
  for (const int32_t end : {1, width() - 2, width() - 1}) {
    if (x < end) return end;
  }
  return INT32_MAX;
}

void Sampler::Place(const int32_t* columns, int32_t column_move, const int32_t* rows, int first,
                    int end, Tap* tap) const {
  switch (source_.bit_count()) {
    case 1:
      return PlaceDepth<1>(columns, column_move, rows, stride(), first, end, tap);
    case 4:
      return PlaceDepth<4>(columns, column_move, rows, stride(), first, end, tap);
    case 8:
      return PlaceDepth<8>(columns, column_move, rows, stride(), first, end, tap);
    case 24:
      return PlaceDepth<24>(columns, column_move, rows, stride(), first, end, tap);
  }
}

void Sampler::Fetch(const Tap& tap, int32_t row_move, int first, int end, uint32_t* colors) const {
  const rows::RowFunctions& functions = rows::Active();
  const int32_t move = row_move * stride();
  const size_t n = static_cast<size_t>(end - first);
  if (source_.bit_count() == 24) {
    functions.fetch24(source_.rows(), height() * stride(), tap.offset + first, move, n,
                      colors + first);
  } else {
    functions.fetch_indexed(source_.rows(), tap.offset + first, tap.shift + first, move,
                            (1u << source_.bit_count()) - 1, colors_, n, colors + first);
  }
}

void Sampler::Store(const uint32_t* colors, int first, int end, int count, uint8_t* row) {
  if (first >= end) return;
  const rows::RowFunctions& functions = rows::Active();
  if (source_.bit_count() == 24) {
    functions.drop_fourth_byte(reinterpret_cast<const uint8_t*>(colors + first),
                               static_cast<size_t>(end - first), row + 3 * first);
    return;
  }
  uint8_t indices[kRun];
  if (end - first < count) std::memset(indices, 255, sizeof indices);
  if (mode_ == kPoint || channels_ == 1) {
    const size_t n = static_cast<size_t>(end - first);
    functions.low_bytes(colors + first, n, indices + first);
    if (mode_ != kPoint) functions.apply_table(indices + first, n, gray_index_);
  } else {
    for (int i = first; i < end; ++i) {
      const uint32_t color = colors[i];
      indices[i] = nearest_->Find(static_cast<uint8_t>(color), static_cast<uint8_t>(color >> 8),
                                  static_cast<uint8_t>(color >> 16));
    }
  }
  PackIndices(indices, source_.bit_count(), static_cast<size_t>(count), row);
}

}  // namespace ombrilo
