#include "geometry/resample.h"

#include <algorithm>
#include <cstring>

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
  gray_ = palette.AllGray();
  for (int i = 0; i < 256; ++i) {
    const uint8_t* bgr = palette.bgr[i];
    levels_[i] = bgr[0];
    colors_[i] = gray_ ? bgr[0] : static_cast<uint32_t>(bgr[0] | bgr[1] << 8 | bgr[2] << 16);
    const uint8_t level = static_cast<uint8_t>(i);
    if (gray_) gray_index_[i] = nearest_->Find(level, level, level);
  }
  // Then every level is an entry and the nearest one to itself.
  plain_gray_ = gray_;
  for (int i = 0; i < 256; ++i) plain_gray_ = plain_gray_ && levels_[i] == i;
}

bool Sampler::Paints() const {
  return width() != 0 && height() != 0 && (source_.indexed() || source_.bit_count() == 24) &&
         mode_ >= kPoint && mode_ <= kBicubic;
}

// A sample that the operations' own corrections leave outside the source is clamped into it. Of
// gray levels the lowest channel is the level and the others are 0.
uint32_t Sampler::ColorAt(int32_t column, int32_t row) const {
  column = std::clamp(column, 0, width() - 1);
  row = std::clamp(row, 0, height() - 1);
  const uint8_t* pixels = source_.row(row);
  if (source_.bit_count() != 24)
    return colors_[GetIndex(pixels, source_.bit_count(), static_cast<size_t>(column))];
  pixels += 3 * column;
  return static_cast<uint32_t>(pixels[0] | pixels[1] << 8 | pixels[2] << 16);
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
  simd::Active().bilinear(taps, &column.fraction, &row.fraction, true, 1, &color);
  return color;
}

uint32_t Sampler::BicubicColor(Position column, Position row, int32_t x, int32_t y) const {
  const simd::RowFunctions& functions = simd::Active();
  float column_weights[4], row_weights[4];
  float* const across[4] = {column_weights, column_weights + 1, column_weights + 2,
                            column_weights + 3};
  float* const down[4] = {row_weights, row_weights + 1, row_weights + 2, row_weights + 3};
  functions.cubic_weights(&column.fraction, 1, across);
  functions.cubic_weights(&row.fraction, 1, down);

  const int channels = gray_ ? 1 : 3;
  const CubicOffsets column_offsets = ColumnOffsets(x);
  const CubicOffsets row_offsets = RowOffsets(y);
  // Corrections persist: a later sample starts from the coordinates that an earlier one left.
  int32_t ix = column.whole, iy = row.whole;
  float sums[4][3];
  for (int j = 0; j < 4; ++j) {
    const int32_t up_by = row_offsets.at[j];
    if (iy + up_by > height() - 1) iy = height() - up_by - 1;
    if (iy + up_by < 0) iy = -up_by;
    uint32_t samples[4];
    for (int k = 0; k < 4; ++k) {
      const int32_t right_by = column_offsets.at[k];
      // A reflection, on purpose unlike the rule for rows.
      if (ix + right_by > width() - 1) ix = width() - ix - 1;
      if (ix + right_by < 0) ix = -right_by;
      samples[k] = ColorAt(ix + right_by, iy + up_by);
    }
    for (int c = 0; c < channels; ++c) {
      const auto level = [&](int k) { return static_cast<float>(samples[k] >> 8 * c & 255); };
      sums[j][c] = level(0) * column_weights[0] + level(1) * column_weights[1] +
                   level(2) * column_weights[2] + level(3) * column_weights[3];
    }
  }
  uint32_t color = 0;
  for (int c = 0; c < channels; ++c) {
    const float value = sums[0][c] * row_weights[0] + sums[1][c] * row_weights[1] +
                        sums[2][c] * row_weights[2] + sums[3][c] * row_weights[3];
    color |= static_cast<uint32_t>(std::clamp(static_cast<int32_t>(value), 0, 255)) << 8 * c;
  }
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

// The end of the columns that have the offsets of column x.
int32_t Sampler::EndOfOffsets(int32_t x) const {
  for (const int32_t end : {1, width() - 2, width() - 1}) {
    if (x < end) return end;
  }
  return INT32_MAX;
}

Sampler::Range Sampler::Inner(int32_t size) const {
  return {mode_ == kBicubic ? 1 : 0, size - static_cast<int32_t>(mode_)};
}

void Sampler::Place(const int32_t* columns, int32_t column_move, const int32_t* rows, int first,
                    int end, int tap, Taps* taps) const {
  FindPixels(columns + first, column_move, rows == nullptr ? nullptr : rows + first, stride(),
             source_.bit_count(), static_cast<size_t>(end - first), taps->offset[tap] + first,
             taps->shift[tap] + first);
}

bool Sampler::DecodeRows() {
  if (!gray_ || source_.bit_count() == 8) return true;
  // Words of the last columns reach further.
  decoded_ = NewZeroedBuffer<uint8_t>(static_cast<size_t>(width()) + 4);
  return decoded_ != nullptr;
}

void Sampler::FindNeighbours(const int32_t* columns, const int32_t* rows, int32_t x, int first,
                             int end, Taps* taps) {
  if (decoded_ != nullptr) {
    const int32_t left = mode_ == kBicubic ? -1 : 0;
    decoded_first_ = (columns[first] + left) & ~7;
    decoded_count_ = columns[end - 1] + left + tap_count() - decoded_first_;
    for (int i = first; i < end; ++i) taps->offset[0][i] = columns[i] + left - decoded_first_;
    return;
  }
  if (mode_ == kBicubic && BlendsBytes()) {
    Place(columns, -1, rows, first, end, 0, taps);
    return;
  }
  if (mode_ != kBicubic || side_by_side()) {
    // Neighbours are read side by side whatever the offsets; SumAcross() picks from them.
    const int32_t left = mode_ == kBicubic ? -1 : 0;
    for (int k = 0; k < (whole_words() ? 1 : tap_count()); ++k) {
      Place(columns, left + k, rows, first, end, k, taps);
    }
    return;
  }
  for (int i = first; i < end;) {
    const CubicOffsets offsets = ColumnOffsets(x + i);
    const int next = static_cast<int>(std::min(EndOfOffsets(x + i) - x, end));
    for (int k = 0; k < 4; ++k) Place(columns, offsets.at[k], rows, i, next, k, taps);
    i = next;
  }
}

void Sampler::FetchTap(const Taps& taps, int tap, int32_t row_move, int first, int end,
                       uint32_t* colors) const {
  const simd::RowFunctions& functions = simd::Active();
  const int32_t bytes = height() * stride(), move = row_move * stride();
  const size_t n = static_cast<size_t>(end - first);
  if (source_.bit_count() == 24 || whole_words()) {
    functions.fetch_words(source_.rows(), bytes, taps.offset[tap] + first, move, n, colors + first);
  } else {
    functions.fetch_indexed(source_.rows(), bytes, taps.offset[tap] + first,
                            taps.shift[tap] + first, move, (1u << source_.bit_count()) - 1, colors_,
                            n, colors + first);
  }
}

void Sampler::Fetch(const Taps& taps, int32_t row_move, int first, int end, Samples* samples) {
  const simd::RowFunctions& functions = simd::Active();
  const size_t n = static_cast<size_t>(end - first);
  if (decoded_ != nullptr) {
    const size_t count = static_cast<size_t>(decoded_count_);
    UnpackIndices(source_.row(row_move) +
                      size_t{static_cast<uint32_t>(decoded_first_)} * source_.bit_count() / 8,
                  source_.bit_count(), count, decoded_.get());
    functions.apply_table(decoded_.get(), count, levels_);
    functions.fetch_words(decoded_.get(), width() + 4, taps.offset[0] + first, 0, n,
                          samples->tap[0] + first);
    return;
  }
  if (whole_words()) {
    uint32_t* const words = samples->tap[mode_ == kBicubic && !gray_ ? 3 : 0];
    FetchTap(taps, 0, row_move, first, end, words);
    if (mode_ == kBicubic && !gray_) {
      uint32_t* const channels[3] = {samples->tap[0] + first, samples->tap[1] + first,
                                     samples->tap[2] + first};
      functions.look_up_channels(words + first, n, colors_, channels);
    } else if (gray_ && !plain_gray_) {
      functions.apply_table(reinterpret_cast<uint8_t*>(samples->tap[0] + first), 4 * n, levels_);
    }
    return;
  }
  for (int k = 0; k < tap_count(); ++k) {
    FetchTap(taps, k, row_move, first, end, samples->tap[k]);
  }
  if (gray_) {
    const uint32_t* words[4];
    for (int k = 0; k < 4; ++k) words[k] = samples->tap[std::min(k, tap_count() - 1)] + first;
    functions.pack_bytes(words, n, samples->tap[0] + first);
  }
}

void Sampler::Blend(const Samples& lower, const Samples& upper, const float* dx, const float* dy,
                    bool one_row, int first, int end, uint32_t* colors) const {
  const simd::RowFunctions& functions = simd::Active();
  const size_t n = static_cast<size_t>(end - first);
  const uint32_t* const taps[4] = {lower.tap[0] + first, lower.tap[1] + first, upper.tap[0] + first,
                                   upper.tap[1] + first};
  dx += first;
  dy += one_row ? 0 : first;
  if (gray_) {
    functions.bilinear_gray(taps[0], taps[2], dx, dy, one_row, n, colors + first);
  } else {
    functions.bilinear(taps, dx, dy, one_row, n, colors + first);
  }
}

void Sampler::Pick(const Taps& taps, int32_t row_move, int first, int end, uint8_t* row) const {
  const simd::RowFunctions& functions = simd::Active();
  const int32_t bytes = height() * stride(), move = row_move * stride();
  const int32_t* const offset = taps.offset[0] + first;
  const size_t n = static_cast<size_t>(end - first);
  if (source_.bit_count() == 1) {
    functions.pick1(source_.rows(), bytes, offset, taps.shift[0] + first, move, n, row + first / 8);
  } else if (source_.bit_count() == 8) {
    functions.pick8(source_.rows(), bytes, offset, move, n, row + first);
  } else {
    functions.pick24(source_.rows(), bytes, offset, move, n, row + 3 * first);
  }
}

void Sampler::ReadAhead(const Taps& taps, ptrdiff_t move, int first, int end) const {
  // Not a pointer's arithmetic: that must not leave the block.
  const uintptr_t rows = reinterpret_cast<uintptr_t>(source_.rows()) + static_cast<uintptr_t>(move);
  for (int i = first; i < end; i += 8) {
    __builtin_prefetch(
        reinterpret_cast<const void*>(rows + static_cast<uintptr_t>(taps.offset[0][i])));
  }
}

void Sampler::BlendBytes(const Taps& taps, int32_t row_move, const float* dx, const float* dy,
                         bool one_row, int first, int end, uint8_t* row) const {
  const simd::RowFunctions& functions = simd::Active();
  const int channels = source_.indexed() ? 1 : 3;
  const uint8_t* const lower = source_.rows() + row_move * stride();
  (channels == 1 ? functions.bilinear8 : functions.bilinear24)(
      lower, lower + stride(), (height() - 1 - row_move) * stride(), taps.offset[0] + first,
      dx + first, dy + (one_row ? 0 : first), one_row, static_cast<size_t>(end - first),
      row + channels * first);
}

void Sampler::SumBytesAcross(const Taps& taps, int32_t row_move, int32_t x,
                             const float (*weights)[kRun], bool one_row, int first, int end,
                             float* sums) const {
  const simd::RowFunctions& functions = simd::Active();
  const auto sum = source_.indexed() ? functions.cubic_across8 : functions.cubic_across24;
  for (int i = first; i < end;) {
    const int next = static_cast<int>(std::min(EndOfOffsets(x + i) - x, end));
    const CubicOffsets offsets = ColumnOffsets(x + i);
    int columns[4];
    const float* from_weights[4];
    for (int k = 0; k < 4; ++k) {
      columns[k] = offsets.at[k] + 1;
      from_weights[k] = weights[k] + i;
    }
    sum(source_.rows(), height() * stride(), taps.offset[0] + i, row_move * stride(), one_row,
        columns, from_weights, static_cast<size_t>(next - i), kRun, sums + i);
    i = next;
  }
}

void Sampler::SumBytesDown(const float* const sums[4], const float* const weights[4], bool one_row,
                           int first, int end, uint8_t* row) const {
  const simd::RowFunctions& functions = simd::Active();
  const float *from_sums[4], *from_weights[4];
  for (int k = 0; k < 4; ++k) {
    from_sums[k] = sums[k] + first;
    from_weights[k] = weights[k] + (one_row ? 0 : first);
  }
  (source_.indexed() ? functions.cubic_down8 : functions.cubic_down24)(
      from_sums, from_weights, one_row, static_cast<size_t>(end - first), kRun,
      row + (source_.indexed() ? 1 : 3) * first);
}

void Sampler::SumAcross(const Samples& samples, int32_t x, const float (*weights)[kRun], int first,
                        int end, float* sums) const {
  const simd::RowFunctions& functions = simd::Active();
  for (int i = first; i < end;) {
    const int next =
        side_by_side() ? static_cast<int>(std::min(EndOfOffsets(x + i) - x, end)) : end;
    const size_t n = static_cast<size_t>(next - i);
    const float* from_weights[4];
    const uint32_t* taps[4];
    for (int k = 0; k < 4; ++k) {
      from_weights[k] = weights[k] + i;
      taps[k] = samples.tap[k] + i;
    }
    if (side_by_side()) {
      const CubicOffsets offsets = ColumnOffsets(x + i);
      int bytes[4];
      for (int k = 0; k < 4; ++k) bytes[k] = offsets.at[k] + 1;
      for (int c = 0; c < (gray_ ? 1 : 3); ++c) {
        functions.cubic_across_gray(taps[c], bytes, from_weights, n, sums + c * kRun + i);
      }
    } else {
      functions.cubic_across(taps, from_weights, n, kRun, sums + i);
    }
    i = next;
  }
}

void Sampler::SumDown(const float* const sums[4], const float* const weights[4], bool one_row,
                      int first, int end, uint32_t* colors) const {
  const simd::RowFunctions& functions = simd::Active();
  const size_t n = static_cast<size_t>(end - first);
  const float *from_sums[4], *from_weights[4];
  for (int k = 0; k < 4; ++k) {
    from_sums[k] = sums[k] + first;
    from_weights[k] = weights[k] + (one_row ? 0 : first);
  }
  if (gray_) {
    functions.cubic_down_gray(from_sums, from_weights, one_row, n, colors + first);
  } else {
    functions.cubic_down(from_sums, from_weights, one_row, n, kRun, colors + first);
  }
}

void Sampler::Store(const uint32_t* colors, int first, int end, int count, uint8_t* row) {
  if (first >= end) return;
  const simd::RowFunctions& functions = simd::Active();
  const size_t n = static_cast<size_t>(end - first);
  colors += first;
  if (source_.bit_count() == 24) {
    functions.drop_fourth_byte(reinterpret_cast<const uint8_t*>(colors), n, row + 3 * first);
    return;
  }
  uint8_t packed_later[kRun];
  const bool packed = source_.bit_count() < 8;
  if (packed && end - first < count) std::memset(packed_later, 255, sizeof packed_later);
  uint8_t* const indices = (packed ? packed_later : row) + first;
  if (mode_ == kPoint || gray_) {
    functions.low_bytes(colors, n, indices);
    if (gray_ && !plain_gray_) functions.apply_table(indices, n, gray_index_);
  } else {
    nearest_->Find(reinterpret_cast<const uint8_t*>(colors), 4, n, indices);
  }
  if (packed) {
    PackIndices(packed_later, source_.bit_count(), static_cast<size_t>(count), row);
  }
}

}  // namespace ombrilo
