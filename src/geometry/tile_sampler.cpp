#include "geometry/tile_sampler.h"

#include <algorithm>

namespace ombrilo {

struct TileSampler::Work {
  static constexpr size_t kPlane = Positions::kRoom;

  alignas(64) int32_t offset[kPlane];
  alignas(64) float across[4][kPlane], down[4][kPlane];  // weights
  alignas(64) float sums[4][3 * kPlane];
  alignas(64) uint8_t sampled[3 * kSide];
};

TileSampler::TileSampler(Sampler& sampler, int32_t columns_ahead, int32_t rows_ahead)
    : sampler_(sampler),
      functions_(simd::Active()),
      columns_(sampler.Inner(sampler.width())),
      rows_(sampler.Inner(sampler.height())),
      decoded_rows_(sampler.in_place() ? 0 : std::min(kSpan, sampler.height()) + 3),
      // With neighbours, up to 7 columns before the tile's, and one after the image's.
      decoded_pitch_((std::min(kSpan, sampler.width()) + 16) * sampler.channels()),
      memory_(sizeof(Work) + static_cast<size_t>(decoded_rows_ * decoded_pitch_)),
      work_(reinterpret_cast<Work*>(memory_.get())),
      decoded_(memory_ ? memory_.get() + sizeof(Work) : nullptr) {
  if (!memory_) return;
  const DibView& source = sampler.source();
  const bool in_place = sampler.in_place();
  const int32_t before = sampler.before(), channels = sampler.channels();
  const int32_t pitch = in_place ? static_cast<int32_t>(source.stride()) : decoded_pitch_;
  area_ = {columns_.first, columns_.end - 1, rows_.first, rows_.end - 1, before, before, channels,
           // The only row of an image is also the row above it.
           source.height() == 1 ? 0 : pitch};
  places_ = {in_place ? source.rows() : decoded_,
             pitch * (in_place ? source.height() : decoded_rows_), work_->offset, channels, false};
  ahead_ = ptrdiff_t{rows_ahead} * pitch + columns_ahead * channels;
}

void TileSampler::Begin(Span columns, Span rows) {
  if (sampler_.in_place() || columns_.empty() || rows_.empty()) return;
  const int32_t before = sampler_.before(), after = sampler_.after();
  const int32_t first = (columns_.Limit(columns.first) - before) & ~7;
  const int32_t end = std::min(columns_.Limit(columns.end - 1) + after, sampler_.width());
  const int32_t low = rows_.Limit(rows.first) - before;
  const int32_t high = std::min(rows_.Limit(rows.end - 1) + after, sampler_.height());
  for (int32_t row = low; row < high; ++row) {
    sampler_.Decode(row, first, end, decoded_ + (row - low) * decoded_pitch_);
  }
  area_.first_column = first + before;
  area_.first_row = low + before;
}

void TileSampler::Sample(const Positions& at, int32_t x, int32_t y, int32_t count, uint8_t* row) {
  const auto n = static_cast<size_t>(count);
  uint8_t* const to = sampler_.in_place() ? row + int64_t{x} * sampler_.channels() : work_->sampled;
  const bool inside = functions_.find_places(area_, at.column, at.row, n, work_->offset);
  if (sampler_.in_place()) ReadAhead(n);
  switch (sampler_.mode()) {
    case OMB_RESAMPLE_POINT:
      functions_.pick(places_, n, to);
      break;
    case OMB_RESAMPLE_BILINEAR: {
      simd::PixelPlaces places = places_;
      places.bytes -= area_.pitch;
      functions_.bilinear(places, places.base + area_.pitch, at.dx, at.dy, n, to);
      break;
    }
    case OMB_RESAMPLE_BICUBIC:
      Bicubic(at, inside, x, y, count, to);
      break;
  }
  if (to == work_->sampled) sampler_.Encode(to, x, count, row);
}

void TileSampler::ReadAhead(size_t count) const {
  // Not pointer arithmetic, which must not leave the block.
  const uintptr_t rows = reinterpret_cast<uintptr_t>(places_.base) + static_cast<uintptr_t>(ahead_);
  for (size_t i = 0; i < count; i += 8) {
    __builtin_prefetch(
        reinterpret_cast<const void*>(rows + static_cast<uintptr_t>(work_->offset[i])));
  }
}

void TileSampler::Bicubic(const Positions& at, bool inside, int32_t x, int32_t y, int32_t count,
                          uint8_t* to) {
  // Positions ascend or descend along the run, so those that need corrections are at its ends.
  Span uncorrected = {0, count};
  const auto inner = [&](int32_t i) {
    return columns_.Holds(at.column[i]) && rows_.Holds(at.row[i]);
  };
  if (!inside || columns_.empty() || rows_.empty()) {
    while (!uncorrected.empty() && !inner(uncorrected.first)) ++uncorrected.first;
    while (!uncorrected.empty() && !inner(uncorrected.end - 1)) --uncorrected.end;
  }
  Work& w = *work_;
  float *across[4], *down[4];
  for (int k = 0; k < 4; ++k) {
    across[k] = w.across[k];
    down[k] = w.down[k];
  }
  functions_.cubic_weights(at.dx, static_cast<size_t>(count), across);
  functions_.cubic_weights(at.dy, static_cast<size_t>(count), down);
  for (const Span& border : {Span{0, uncorrected.first}, Span{uncorrected.end, count}}) {
    for (int32_t i = border.first; i < border.end; ++i) {
      Sampler::CubicPixel pixel = {at.column[i], x + i, sampler_.RowsOf(at.row[i], y), {}, {}};
      for (int k = 0; k < 4; ++k) {
        pixel.across[k] = across[k][i];
        pixel.down[k] = down[k][i];
      }
      sampler_.SampleBicubic(pixel, to + i * sampler_.channels());
    }
  }
  if (uncorrected.empty()) return;
  for (int k = 0; k < 4; ++k) {
    across[k] += uncorrected.first;
    down[k] += uncorrected.first;
  }
  const auto n = static_cast<size_t>(uncorrected.end - uncorrected.first);
  // Places are those of the lowest of the rows that a pixel reads. For a pixel in row 1 that is
  // row 0, so its rows are the distances from there.
  const Sampler::CubicRows rows = sampler_.RowsOf(1, y);
  const float* sums[4];
  for (int j = 0; j < 4; ++j) {
    simd::PixelPlaces places = places_;
    places.base += rows.at[j] * area_.pitch;
    places.bytes -= rows.at[j] * area_.pitch;
    places.offset += uncorrected.first;
    sampler_.SumAcross(places, x + uncorrected.first, across, Work::kPlane, n, w.sums[j]);
    sums[j] = w.sums[j];
  }
  functions_.cubic_down(sums, down, sampler_.channels(), false, Work::kPlane, n,
                        to + uncorrected.first * sampler_.channels());
}

}  // namespace ombrilo
