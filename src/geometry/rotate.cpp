// omb_rotate: an image turned about its center.
//
// Positive right angles move pixels exactly. Any other angle resamples: each row of the new image
// crosses the source along a straight line, so that the pixels that are in the source are one run.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

#include "core/elementary.h"
#include "core/replacement.h"
#include "geometry/right_angles.h"
#include "geometry/tile_sampler.h"
#include "rows/row_functions.h"

namespace ombrilo {

namespace {

// Source pixels are prefetched this many rows of the new image before they are read.
constexpr float kRowsAhead = 8;
// Positions above -1 truncate to 0 and belong to the first column or row.
constexpr float kAboveMinusOne = -0x1.fffffep-1f;

// Sizes and positions are computed in single precision throughout.
struct Turn {
  float c, s;  // cosine and sine
  int64_t width, height;

  Turn(float degrees, const DibHeader& source) {
    const double theta = degrees / 180.0 * 3.1415926;
    c = static_cast<float>(Cosine(theta));
    s = static_cast<float>(Sine(theta));
    const float w = static_cast<float>(source.width), h = static_cast<float>(source.height);
    const float half = 0.5f;
    width =
        static_cast<int64_t>(std::max(std::fabs(w * c - h * s), std::fabs(w * c + h * s)) + half);
    height =
        static_cast<int64_t>(std::max(std::fabs(h * c - w * s), std::fabs(h * c + w * s)) + half);
  }
};

class Rotator {
 public:
  Rotator(const Sampler& sampler, const Turn& turn)
      : source_width_(sampler.width()),
        source_height_(sampler.height()),
        turn_(turn),
        width_(static_cast<int32_t>(turn.width)),
        height_(static_cast<int32_t>(turn.height)),
        // Beyond these sizes positions are rounded by more than a tile has room for.
        side_(std::max({source_width_, source_height_, width_, height_}) < 1 << 22
                  ? TileSampler::kSide
                  : 1) {}

  // Pixels that come from outside the source are 255, and so is the padding.
  void Run(TileSampler& tile, uint8_t* rows, size_t stride) {
    for (int32_t y = 0, count; y < height_; y += count) {
      count = std::min(side_, height_ - y);
      uint8_t* const first_row = rows + static_cast<size_t>(y) * stride;
      std::memset(first_row, 255, static_cast<size_t>(count) * stride);
      Span all = {width_, 0};
      for (int32_t k = 0; k < count; ++k) {
        FindLine(y + k, &lines_[k]);
        if (lines_[k].inside.empty()) continue;
        all.first = std::min(all.first, lines_[k].inside.first);
        all.end = std::max(all.end, lines_[k].inside.end);
      }
      for (int32_t x = all.first; x < all.end; x += std::min(side_, all.end - x)) {
        SampleTile(tile, x, std::min(side_, all.end - x), y, count, first_row, stride);
      }
    }
  }

 private:
  // A row of the new image: the axes of the source along it, and its pixels that are in the source.
  struct Line {
    simd::TurnedAxis axes[2];
    Span inside;
  };

  void SampleTile(TileSampler& tile, int32_t x, int32_t columns, int32_t y, int32_t rows,
                  uint8_t* to, size_t stride) {
    tile.Begin(Reach(0, source_width_, x, columns, rows),
               Reach(1, source_height_, x, columns, rows));
    for (int32_t k = 0; k < rows; ++k) {
      const Line& line = lines_[k];
      const Span run = {std::max(x, line.inside.first), std::min(x + columns, line.inside.end)};
      if (run.empty()) continue;
      const auto count = static_cast<size_t>(run.end - run.first);
      const int32_t from = FromMiddle(run.first);
      functions_.turned_positions(line.axes[0], from, count, at_.column, at_.dx);
      functions_.turned_positions(line.axes[1], from, count, at_.row, at_.dy);
      tile.Sample(at_, run.first, y + k, run.end - run.first, to + static_cast<size_t>(k) * stride);
    }
  }

  // The part of an axis that the positions of a tile are in. They ascend or descend along its rows
  // and columns, so the extremes are at its corners.
  Span Reach(int axis, int32_t size, int32_t x, int32_t columns, int32_t rows) const {
    Span reach = {size, 0};
    for (const int32_t k : {0, rows - 1}) {
      for (const int32_t i : {0, columns - 1}) {
        const float position =
            std::clamp(At(lines_[k].axes[axis], x + i), 0.0f, static_cast<float>(size));
        reach.first = std::min(reach.first, static_cast<int32_t>(position));
        reach.end = std::max(reach.end, static_cast<int32_t>(position) + 1);
      }
    }
    return reach;
  }

  void FindLine(int32_t y, Line* line) const {
    // Half sizes are rounded down to integers. That is the contract.
    const float v = static_cast<float>(height_ / 2 - y);
    line->axes[0] = {turn_.c, v * turn_.s, static_cast<float>(source_width_ / 2)};
    line->axes[1] = {turn_.s, -(v * turn_.c), static_cast<float>(source_height_ / 2)};
    line->inside = {0, width_};
    for (const auto& [axis, size] :
         {std::pair{line->axes[0], source_width_}, std::pair{line->axes[1], source_height_}}) {
      const double below_size = std::nextafter(static_cast<double>(size), 0);
      const double sign = axis.step < 0 ? -1 : 1;
      line->inside.first =
          std::max(line->inside.first, FirstAt(axis, sign, sign > 0 ? kAboveMinusOne : below_size));
      line->inside.end = std::min(
          line->inside.end, sign > 0 ? FirstAt(axis, sign, size)
                                     : FirstAt(axis, sign, std::nextafter(kAboveMinusOne, -2.0f)));
    }
  }

  int32_t FromMiddle(int32_t x) const { return x - width_ / 2; }

  float At(const simd::TurnedAxis& axis, int32_t x) const {
    return static_cast<float>(FromMiddle(x)) * axis.step + axis.origin + axis.center;
  }

  // The first pixel of a row whose position is at the limit or beyond it. Positions ascend (sign 1)
  // or descend (sign -1).
  int32_t FirstAt(const simd::TurnedAxis& axis, double sign, double limit) const {
    const auto reached = [&](int32_t x) { return sign * At(axis, x) >= sign * limit; };
    const double guess = (limit - axis.center - axis.origin) / axis.step - FromMiddle(0);
    int32_t x = static_cast<int32_t>(guess > 0 ? std::min(guess, static_cast<double>(width_)) : 0);
    while (x > 0 && reached(x - 1)) --x;
    while (x < width_ && !reached(x)) ++x;
    return x;
  }

  const int32_t source_width_, source_height_;
  const Turn turn_;
  const int32_t width_, height_;
  const int32_t side_;  // of a tile
  const simd::RowFunctions& functions_ = simd::Active();
  Line lines_[TileSampler::kSide];  // of the current tiles
  TileSampler::Positions at_;
};

}  // namespace

}  // namespace ombrilo

uint32_t omb_rotate(PackedDib** image, float degrees, uint32_t mode) {
  using namespace ombrilo;
  const auto source = DibView::Open(image == nullptr ? nullptr : *image);
  if (!source || !(degrees >= -2147483648.0f && degrees < 2147483648.0f)) return 0;
  const int32_t full_turns = static_cast<int32_t>(degrees) / 360;
  const float rest = degrees - 360.0f * static_cast<float>(full_turns);
  const double angle = rest;
  if (std::fabs(angle) < 0.01) return 0;
  // Negative right angles resample on purpose.
  for (int quarters = 1; quarters <= 3; ++quarters) {
    if (std::fabs(angle - 90 * quarters) < 0.01) return TurnByQuarters(image, *source, quarters);
  }

  const Turn turn(rest, source->header());
  NewBlock block =
      NewBlock::Resized(*source, turn.width, turn.height, NewBlock::Rows::kPixelsComeNext);
  if (!block) return 0;
  // Not block.dib(): a core header may have cut the size to 16 bits.
  uint8_t* const rows = block.bytes() + source->prefix_size();
  const auto stride = static_cast<size_t>(StrideOf(turn.width, source->bit_count()));
  Sampler sampler(*source, mode,
                  static_cast<uint64_t>(turn.width) * static_cast<uint64_t>(turn.height));
  if (!sampler) return 0;
  if (sampler.Paints()) {
    TileSampler tile(sampler, -static_cast<int32_t>(kRowsAhead * turn.s),
                     static_cast<int32_t>(kRowsAhead * turn.c));
    if (!tile) return 0;
    Rotator(sampler, turn).Run(tile, rows, stride);
  } else {
    std::memset(rows, 255, stride * static_cast<size_t>(turn.height));
  }
  return block.Replace(image);
}
