#include "geometry/sampler.h"

#include <cstring>

#include "core/pixels.h"
#include "rows/row_functions.h"

namespace ombrilo {

namespace {

struct CubicOffsets {
  int32_t at[4];
};

// Offsets derive from the new image's coordinate and the source's last column or row. Mixing the
// two is part of the contract: enlarging uses the border's offsets over most of the image.
CubicOffsets OffsetsFor(int32_t at, int32_t last) {
  CubicOffsets offsets = {{at < 1 ? 0 : -1, 0, at >= last ? 0 : 1, 2}};
  if (at >= last - 1) offsets.at[3] = offsets.at[2];
  return offsets;
}

CubicOffsets ColumnOffsets(const DibView& source, int32_t x) {
  CubicOffsets offsets = OffsetsFor(x, source.width() - 1);
  // Only at 24 bits, and only for columns, the right edge has a rule of its own.
  if (source.bit_count() == 24 && x >= source.width() - 2) {
    offsets.at[2] = 0;
    offsets.at[3] = 1;
  }
  return offsets;
}

// The end of the run of columns with the same offsets as column x.
int32_t EndOfOffsets(const DibView& source, int32_t x) {
  const int32_t edge = source.width() - 2;
  for (const int32_t end : {1, edge, source.bit_count() == 24 ? edge : edge + 1}) {
    if (x < end) return end;
  }
  return INT32_MAX;
}

}  // namespace

Sampler::Sampler(const DibView& source, uint32_t mode, uint64_t pixels)
    : functions_(simd::Active()),
      source_(source),
      rows_(source.rows()),
      stride_(source.stride()),
      mode_(mode),
      in_place_(source.bit_count() >= 8),
      channels_(source.bit_count() == 24 ? 3 : 1) {
  if (!Paints()) return;
  if (source.indexed() && mode != OMB_RESAMPLE_POINT) {
    colors_.emplace(pixels, !MakeDIBPalette(source)->AllGray());
    ready_ = static_cast<bool>(*colors_);
    if (!ready_) return;
    colors_->Snapshot(source);
    in_place_ = colors_->identity();
    channels_ = static_cast<int32_t>(colors_->step());
  }
  if (mode == OMB_RESAMPLE_BILINEAR && width() == 1) in_place_ = false;
}

bool Sampler::Paints() const {
  return width() != 0 && height() != 0 && (source_.indexed() || source_.bit_count() == 24) &&
         mode_ >= OMB_RESAMPLE_POINT && mode_ <= OMB_RESAMPLE_BICUBIC;
}

Span Sampler::Inner(int32_t size) const {
  const int32_t end = size - after() + 1;
  return {before(), mode_ == OMB_RESAMPLE_BICUBIC ? end : std::max(end, 1)};
}

void Sampler::Decode(int32_t row, int32_t first, int32_t end, uint8_t* to) const {
  const uint8_t* const pixels = source_.row(row);
  const auto count = static_cast<size_t>(end - first);
  const auto step = static_cast<size_t>(channels_);
  if (colors_) {
    colors_->DecodeRow(pixels, static_cast<size_t>(first), count, to);
  } else if (source_.indexed()) {
    UnpackIndices(pixels + static_cast<size_t>(first) * source_.bit_count() / 8,
                  source_.bit_count(), count, to);
  } else {
    std::memcpy(to, pixels + step * static_cast<size_t>(first), step * count);
  }
  std::memcpy(to + step * count, to + step * (count - 1), step);
}

void Sampler::Encode(const uint8_t* sampled, int32_t first, int32_t count, uint8_t* row) {
  const auto column = static_cast<size_t>(first), pixels = static_cast<size_t>(count);
  if (colors_) {
    colors_->EncodeRow(sampled, column, pixels, row);
  } else if (source_.indexed()) {
    PackIndices(sampled, source_.bit_count(), column, pixels, row);
  } else {
    std::memcpy(row + 3 * column, sampled, 3 * pixels);
  }
}

Sampler::CubicRows Sampler::RowsOf(int32_t whole, int32_t y) const {
  CubicRows rows;
  // Corrections persist: a later sample starts from the row that an earlier one left.
  for (int j = 0; j < 4; ++j) {
    const int32_t up_by = OffsetsFor(y, height() - 1).at[j];
    if (whole + up_by > height() - 1) whole = height() - up_by - 1;
    if (whole + up_by < 0) whole = -up_by;
    rows.at[j] = std::clamp(whole + up_by, 0, height() - 1);
  }
  return rows;
}

void Sampler::SumAcross(const simd::PixelPlaces& places, int32_t x, const float* const weights[4],
                        size_t plane, size_t count, float* sums) const {
  simd::PixelPlaces part = places;
  for (size_t i = 0, n; i < count; i += n) {
    const auto at = x + static_cast<int32_t>(i);
    n = std::min(count - i, static_cast<size_t>(EndOfOffsets(source_, at) - at));
    const CubicOffsets offsets = ColumnOffsets(source_, at);
    int columns[4];
    const float* from_weights[4];
    for (int k = 0; k < 4; ++k) {
      columns[k] = offsets.at[k] + 1;
      from_weights[k] = weights[k] + i;
    }
    part.offset = places.offset + i;
    functions_.cubic_across(part, columns, from_weights, plane, n, sums + i);
  }
}

void Sampler::SampleBicubic(const CubicPixel& pixel, uint8_t* to) const {
  const CubicOffsets offsets = ColumnOffsets(source_, pixel.x);
  const int32_t last = width() - 1, step = in_place_ ? channels_ : 1;
  simd::CubicNeighbours neighbours;
  int32_t in_row[4][4];
  int32_t column = pixel.column;
  bool moved = true;
  for (int j = 0; j < 4; ++j) {
    neighbours.rows[j] = rows_ + static_cast<size_t>(pixel.rows.at[j]) * stride_;
    // Corrections persist here too. Once a row needs none, the later ones read the same columns.
    if (!moved) {
      neighbours.offset[j] = neighbours.offset[j - 1];
      continue;
    }
    const int32_t before = column;
    for (int k = 0; k < 4; ++k) {
      const int32_t right_by = offsets.at[k];
      // A reflection, on purpose unlike the rule for rows.
      if (column + right_by > last) column = last - column;
      if (column + right_by < 0) column = -right_by;
      // What the corrections leave outside the source is clamped into it.
      in_row[j][k] = step * std::clamp(column + right_by, 0, last);
    }
    moved = column != before;
    neighbours.offset[j] = in_row[j];
  }
  if (in_place_ && channels_ == 1) {
    functions_.cubic_pixel(neighbours, pixel.across, pixel.down, 1, to);
    return;
  }
  // Three bytes are read as four: not where none follows, at the end of the image.
  const auto reaches_end = [&](int j) {
    const int32_t* const offset = neighbours.offset[j];
    return pixel.rows.at[j] == height() - 1 &&
           *std::max_element(offset, offset + 4) + 4 > static_cast<int32_t>(stride_);
  };
  int32_t copied[4][4];
  uint8_t copies[4][16];
  for (int j = 0; j < 4; ++j) {
    if (in_place_ && !reaches_end(j)) continue;
    for (int k = 0; k < 4; ++k) {
      const int32_t from = neighbours.offset[j][k];
      if (in_place_) {
        copied[j][k] = 3 * k;
        std::memcpy(copies[j] + 3 * k, neighbours.rows[j] + from, 3);
      } else {
        copied[j][k] =
            3 * GetIndex(neighbours.rows[j], source_.bit_count(), static_cast<size_t>(from));
      }
    }
    neighbours.rows[j] = in_place_ ? copies[j] : colors_->palette().bgr[0];
    neighbours.offset[j] = copied[j];
  }
  functions_.cubic_pixel(neighbours, pixel.across, pixel.down, channels_, to);
}

}  // namespace ombrilo
