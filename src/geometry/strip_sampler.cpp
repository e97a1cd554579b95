#include "geometry/strip_sampler.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <utility>

#include "core/read_ahead.h"

namespace ombrilo {

namespace {

// Planning takes longer than picking a few rows.
constexpr int32_t kPlannedRows = 32;

// The places from pixel `first` on.
simd::PixelPlaces From(simd::PixelPlaces places, int32_t first) {
  places.offset += first;
  return places;
}

constexpr size_t kPadding = simd::kSpreadPadding;  // of arrays; the longest that row functions want

// The distance between two arrays of up to `count` values and their padding. Arrays nearly a
// multiple of 4 KiB apart would get in each other's way in the first-level cache.
size_t PlaneOf(int32_t count) {
  const size_t values = (static_cast<size_t>(count) + 2 * kPadding - 1) / kPadding * kPadding;
  return values % 1024 < 32 ? values + 32 : values;
}

size_t PlanBytes(const Sampler& sampler, int32_t columns) {
  const size_t bytes = static_cast<size_t>(columns) * static_cast<size_t>(sampler.channels());
  return simd::PickPlan::kRoom * ((bytes + 63) / 64 * 64);
}

int PlaneCount(const Sampler& sampler, bool pairs) {
  if (sampler.mode() == OMB_RESAMPLE_BICUBIC) return 2 + 4 + 4 * sampler.channels();
  return pairs ? 3 + 2 * 2 * sampler.channels() : 2;
}

}  // namespace

StripSampler::StripSampler(Sampler& sampler, int32_t columns, int32_t span, int32_t height)
    : sampler_(sampler),
      functions_(simd::Active()),
      inner_rows_(sampler.Inner(sampler.height())),
      enlarges_(sampler.mode() == OMB_RESAMPLE_BILINEAR && height > sampler.height()),
      spreads_(enlarges_ && sampler.channels() == 1),
      plans_(sampler.mode() != OMB_RESAMPLE_BICUBIC &&
             (enlarges_ ? sampler.height() : height) >= kPlannedRows),
      fetches_(sampler.in_place() && (height < sampler.height() || enlarges_) &&
               int64_t{span} * sampler.channels() <= int64_t{columns} * simd::kCacheLine &&
               static_cast<uint64_t>(sampler.source().stride()) *
                       static_cast<uint64_t>(sampler.height()) >=
                   kCoreCached),
      plane_(PlaneOf(columns)),
      // Up to 7 columns before those that are read, and one after the image's.
      decoded_size_(sampler.in_place() ? 0
                                       : (static_cast<size_t>(span) + 16) *
                                             static_cast<size_t>(sampler.channels())),
      plan_bytes_(plans_ ? PlanBytes(sampler, columns) : 0),
      memory_(kPadding * sizeof(float) +
              plane_ * sizeof(float) * static_cast<size_t>(PlaneCount(sampler, enlarges_)) +
              2 * decoded_size_ +
              (sampler.in_place() && !spreads_ ? 0 : 3 * static_cast<size_t>(columns) + kPadding) +
              plan_bytes_) {
  if (!memory_) return;
  plan_.picks = memory_.get();
}

// Gives the arrays their places. Values of pixel `aligned` begin a cache line.
void StripSampler::LayOut(int32_t aligned) {
  auto* values = reinterpret_cast<float*>(memory_.get()) + plan_bytes_ / sizeof(float) +
                 (kPadding - static_cast<size_t>(aligned) % kPadding) % kPadding;
  const auto next = [&](int planes) {
    return std::exchange(values, values + plane_ * static_cast<size_t>(planes));
  };
  offset_ = reinterpret_cast<int32_t*>(next(1));
  fraction_ = next(1);
  if (sampler_.mode() == OMB_RESAMPLE_BICUBIC) {
    for (float*& weights : weights_) weights = next(1);
    for (float*& sums : sums_) sums = next(sampler_.channels());
  }
  if (spreads_) spread_fraction_ = next(1);
  for (float*& pairs : pairs_) pairs = enlarges_ ? next(2 * sampler_.channels()) : nullptr;
  decoded_[0] = reinterpret_cast<uint8_t*>(values);
  decoded_[1] = decoded_[0] + decoded_size_;
  sampled_ = decoded_[1] + decoded_size_;
}

void StripSampler::Begin(int32_t x, const Position* columns, int32_t count) {
  x_ = x;
  count_ = count;
  columns_ = columns;
  picked_ = -1;
  std::fill(std::begin(decoded_row_), std::end(decoded_row_), -1);
  std::fill(std::begin(summed_), std::end(summed_), -1);
  const auto channels = static_cast<size_t>(sampler_.channels());
  const Span inner = sampler_.Inner(sampler_.width());
  // Positions ascend, so columns that need corrections are at the ends.
  uncorrected_ = {0, count};
  const auto inside = [&](int32_t i) { return inner.Holds(columns[i].whole); };
  while (!uncorrected_.empty() && !inside(uncorrected_.first)) ++uncorrected_.first;
  while (!uncorrected_.empty() && !inside(uncorrected_.end - 1)) --uncorrected_.end;
  LayOut(uncorrected_.first);
  whole_ = true;
  for (int32_t i = 0; i < count; ++i) {
    fraction_[i] = columns[i].fraction;
    whole_ &= fraction_[i] == 0;
  }
  if (spreads_) {
    functions_.spread_fractions(fraction_, static_cast<size_t>(count), spread_fraction_);
  }
  if (sampler_.mode() == OMB_RESAMPLE_BICUBIC) {
    functions_.cubic_weights(fraction_, static_cast<size_t>(count), weights_);
  }
  if (inner.empty()) return;

  const auto leftmost = [&](int32_t i) {
    return inner.Limit(columns[i].whole) - sampler_.before();
  };
  source_columns_.first = sampler_.in_place() ? 0 : leftmost(0) & ~7;
  source_columns_.end =
      std::min(leftmost(count - 1) + sampler_.before() + sampler_.after(), sampler_.width());
  for (int32_t i = 0; i < count; ++i) {
    offset_[i] = (leftmost(i) - source_columns_.first) * sampler_.channels();
  }
  std::fill_n(offset_ + count, simd::kRunPadding, offset_[count - 1]);
  const bool picks = sampler_.mode() == OMB_RESAMPLE_POINT || spreads_ || whole_;
  const size_t row_bytes = sampler_.in_place() ? sampler_.source().stride() : decoded_size_;
  plan_.count = static_cast<size_t>(count) * channels;
  // Right neighbours are picked by the same plan, from the row's second pixel on.
  planned_ = plans_ && picks &&
             functions_.plan_picks(offset_, channels, row_bytes - (spreads_ ? channels : 0), plan_);
}

void StripSampler::Sample(Position position, Position next, int32_t y, uint8_t* row) {
  uint8_t* const to = sampler_.in_place() ? row + int64_t{x_} * sampler_.channels() : sampled_;
  switch (sampler_.mode()) {
    case OMB_RESAMPLE_POINT:
      return Point(position, next, row, to);
    case OMB_RESAMPLE_BILINEAR:
      // Nothing comes from neighbours, as in all rows of an image that is halved.
      if (whole_ && position.fraction == 0) return Point(position, next, row, to);
      Bilinear(position, next, to);
      break;
    case OMB_RESAMPLE_BICUBIC:
      Bicubic(position, next, y, to);
      break;
  }
  if (to == sampled_) sampler_.Encode(to, x_, count_, row);
}

void StripSampler::Point(Position position, Position next, uint8_t* row, uint8_t* to) {
  const int32_t source_row = inner_rows_.Limit(position.whole);
  if (picked_ == source_row) {
    const size_t bits = sampler_.source().bit_count();
    const size_t first = static_cast<size_t>(x_) * bits / 8;
    std::memcpy(row + first, last_ + first, (static_cast<size_t>(count_) * bits + 7) / 8);
  } else {
    const simd::PixelPlaces places = Places(source_row, source_row);
    InPieces({0, count_}, inner_rows_.Limit(next.whole), 1,
             [&](int32_t first, size_t count) { Pick(places, first, count, to); });
    if (to == sampled_) sampler_.Encode(to, x_, count_, row);
  }
  picked_ = source_row;
  last_ = row;
}

void StripSampler::Pick(const simd::PixelPlaces& places, int32_t first, size_t count, uint8_t* to) {
  const auto channels = static_cast<size_t>(sampler_.channels());
  const size_t at = static_cast<size_t>(first) * channels;
  if (planned_) {
    functions_.pick_planned(places.base, plan_, at, at + count * channels, to);
  } else {
    functions_.pick(From(places, first), count, to + at);
  }
}

void StripSampler::Bilinear(Position position, Position next, uint8_t* to) {
  const int32_t lower = inner_rows_.Limit(position.whole);
  const int32_t upper = std::min(lower + 1, sampler_.height() - 1);
  if (spreads_ ? planned_ : enlarges_) {
    const float* const pairs[2] = {Pairs(lower), Pairs(upper)};
    (spreads_ ? functions_.blend_levels : functions_.blend_colors)(
        pairs[0], pairs[1], spreads_ ? spread_fraction_ : fraction_, position.fraction, plane_,
        static_cast<size_t>(count_), to);
    return;
  }
  const simd::PixelPlaces places = Places(lower, upper);
  const uint8_t* const above = Row(upper);
  const auto blend = [&](int32_t first, size_t count) {
    functions_.bilinear(From(places, first), above, fraction_ + first, &position.fraction, count,
                        to + first * sampler_.channels());
  };
  InPieces({0, count_}, inner_rows_.Limit(next.whole), next.fraction == 0 ? 1 : 2, blend);
}

// Calls f(first, count) for these pixels of the strip: in pieces, if meanwhile source rows from
// `low` on are to be fetched, which are read next and which the processor does not foresee.
template <class F>
void StripSampler::InPieces(Span pixels, int32_t low, int32_t source_rows, F&& f) {
  constexpr int32_t kPiece = 256;
  if (!fetches_) return f(pixels.first, static_cast<size_t>(pixels.end - pixels.first));
  const DibView& source = sampler_.source();
  const int32_t end = std::min(low + source_rows, sampler_.height());
  for (int32_t first = pixels.first, count; first < pixels.end; first += count) {
    count = std::min(kPiece, pixels.end - first);
    const int32_t from = offset_[first], bytes = offset_[first + count] - from;
    for (int32_t row = low; row < end; ++row) {
      ReadAhead<1>(source.row(row) + from, static_cast<size_t>(bytes));
    }
    f(first, static_cast<size_t>(count));
  }
}

const float* StripSampler::Pairs(int32_t source_row) {
  const int32_t slot = source_row & 1;
  float* const pairs = pairs_[slot];
  const auto count = static_cast<size_t>(count_);
  if (std::exchange(summed_[slot], source_row) == source_row) return pairs;
  const simd::PixelPlaces places = Places(source_row, source_row);
  if (!spreads_) {
    InPieces({0, count_}, source_row + 1, 1, [&](int32_t first, size_t part) {
      functions_.spread_colors(From(places, first), plane_, part, pairs + first);
    });
    return pairs;
  }
  for (size_t right = 0; right < 2; ++right) {
    functions_.pick_planned(places.base + right, plan_, 0, count, sampled_);
    functions_.spread_levels(sampled_, count, pairs + right * plane_);
  }
  return pairs;
}

void StripSampler::Bicubic(Position position, Position next, int32_t y, uint8_t* to) {
  Sampler::CubicPixel pixel = {0, 0, sampler_.RowsOf(position.whole, y), {}, {}};
  float* const down[4] = {pixel.down, pixel.down + 1, pixel.down + 2, pixel.down + 3};
  functions_.cubic_weights(&position.fraction, 1, down);
  if (!uncorrected_.empty()) {
    const int32_t first = uncorrected_.first;
    const float* sums[4];
    for (int j = 0; j < 4; ++j) {
      // At a whole position the weights are 0, 1, 0 and 0: any row does for the others.
      const int32_t source_row = pixel.rows.at[position.fraction == 0 ? 1 : j],
                    slot = source_row & 3;  // the four are neighbours
      sums[j] = sums_[slot] + first;
      if (std::exchange(summed_[slot], source_row) == source_row) continue;
      const simd::PixelPlaces places = Places(source_row, source_row);
      // Of the next of the four, or of those of the next row that are not summed by then.
      const bool last = j == 3 || position.fraction == 0;
      const int32_t next_row = next.whole - (next.fraction == 0 ? 0 : 1);
      const int32_t following = std::max(source_row + 1, last ? next_row : 0);
      InPieces(uncorrected_, following, 1, [&](int32_t at, size_t count) {
        const float* across[4];
        for (int k = 0; k < 4; ++k) across[k] = weights_[k] + at;
        sampler_.SumAcross(From(places, at), x_ + at, across, plane_, count, sums_[slot] + at);
      });
    }
    functions_.cubic_down(sums, down, sampler_.channels(), true, plane_,
                          static_cast<size_t>(uncorrected_.end - first),
                          to + first * sampler_.channels());
  }
  for (const Span& border : {Span{0, uncorrected_.first}, Span{uncorrected_.end, count_}}) {
    for (int32_t i = border.first; i < border.end; ++i) {
      pixel.column = columns_[i].whole;
      pixel.x = x_ + i;
      for (int k = 0; k < 4; ++k) pixel.across[k] = weights_[k][i];
      sampler_.SampleBicubic(pixel, to + i * sampler_.channels());
    }
  }
}

const uint8_t* StripSampler::Row(int32_t source_row) {
  if (sampler_.in_place()) return sampler_.source().row(source_row);
  const int32_t slot = source_row & 1;
  if (std::exchange(decoded_row_[slot], source_row) != source_row) {
    sampler_.Decode(source_row, source_columns_.first, source_columns_.end, decoded_[slot]);
  }
  return decoded_[slot];
}

simd::PixelPlaces StripSampler::Places(int32_t source_row, int32_t last) {
  const int32_t bytes = sampler_.in_place() ? (sampler_.height() - last) *
                                                  static_cast<int32_t>(sampler_.source().stride())
                                            : static_cast<int32_t>(decoded_size_);
  return {Row(source_row), bytes, offset_, sampler_.channels(), true};
}

}  // namespace ombrilo
