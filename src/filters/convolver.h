// Weighted sums of neighbours, divided, blended, shifted and clamped: the filter behind
// omb_convolute, omb_emboss and omb_DoConvoluteDIB.
//
// Weights are planned once per call:
//
// - Taps at the same position are merged, and zero weights dropped.
// - Sums are kept in 16 bits if 255 x (positive + negative weights) fits, otherwise in 32.
// - Taps with the same weight, up to its sign, are added up before they are multiplied.
// - 16-bit weights that are a column times a row are summed along rows first, once per source row,
//   and then along columns. So are grids with one frequent weight, which are that weight everywhere
//   plus corrections: 49 weights of "unsharp 7x7" cost 7 + 7 + 1. Columns of equal weights have
//   running totals.
// - Divisions become multiplications where that is proven exact for every sum that can occur;
//   integer division is left for the rest.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/buffer.h"
#include "core/neighbourhood.h"
#include "rows/row_functions.h"

namespace ombrilo {

struct Tap {
  int32_t dx, dy, weight;
};

struct Finishing {
  int32_t divisor;        // 0: none
  int32_t strength = 10;  // the result's share in tenths
  int32_t bias = 0;
  uint8_t color[3] = {};  // added to blue, green and red; for sums within +-32 x 255 and divisor 0
};

class Convolver {
 public:
  // Takes all memory, and the taps, which it reorders; false when there is none.
  Convolver(Buffer<Tap> taps, size_t count, const Finishing& finishing);
  explicit operator bool() const { return taps_ && runs_ && rows_; }

  const Reach& reach() const { return reach_; }
  // 16-bit sums, in whole blocks: of each row, and the totals of the rows in the window.
  FilterMemory memory() const {
    if (across_.count == 0) return {};
    const FilterMemory::Part sums = {2, 2 * simd::kConvolutionBlock};
    return {sums, running_ ? sums : FilterMemory::Part{}};
  }

  void Begin(const WindowLayout& layout);
  void Prepare(uint8_t* row);
  void Combine(uint8_t* const* rows, size_t first, size_t count, uint8_t* to);

 private:
  static constexpr int kMaxBox = 16;  // sides of a grid that is searched for products

  struct Product {
    int32_t across[kMaxBox];
    int32_t down[kMaxBox];
    int cost;
  };
  // Taps of sums along rows or along columns.
  struct Line {
    Tap taps[kMaxBox];
    size_t count = 0;
    simd::WeightRun runs[kMaxBox];
    size_t run_count = 0;
  };

  int32_t Rows() const { return reach_.before + 1 + reach_.after; }  // of the window
  void Merge();
  void ChooseFinish(const Finishing& finishing);
  void Factor();
  bool FindProduct(const int32_t (&grid)[kMaxBox][kMaxBox], int width, int height,
                   Product& product) const;
  Product FrequentWeight(const int32_t (&grid)[kMaxBox][kMaxBox], int width, int height) const;

  Buffer<Tap> taps_;
  size_t count_;
  Buffer<simd::WeightRun> runs_;
  size_t run_count_ = 0;
  Buffer<const uint8_t*> rows_;  // of bytes, at each tap
  Reach reach_ = {};
  int64_t positive_ = 0, negative_ = 0;  // sums of the weights by sign
  simd::Convolution plan_ = {};
  uint8_t color_[3];
  int16_t offset_[simd::kConvolutionOffsets];
  Line across_, down_;
  const uint8_t* sums_[kMaxBox] = {};  // rows of sums, at each tap of down_
  // If all rows of the window have the same weight in down_: the totals of their sums in this walk,
  // and how many rows these are.
  bool running_ = false;
  uint8_t* totals_ = nullptr;
  int32_t prepared_ = 0;
  WindowLayout layout_ = {};
};

}  // namespace ombrilo
