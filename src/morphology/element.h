// A structuring element, ready to be applied.
//
// An element is cut into horizontal runs. Where each run lies among the columns of all longer ones,
// as in rectangles, circles and crosses, and none is very long, nothing is computed once per source
// row: the columns of rows with equal runs are combined first, then the extremes of these along the
// row. The 97 pixels of "Circle 11x11" cost 14 reads across rows and 11 along them.
//
// Of other elements, extremes over a run's length are computed once per source row, for all rows of
// the element that have a run of that length, each from the extreme over a shorter length: two
// reads cover any length up to twice that.
#pragma once

#include <algorithm>
#include <cstdint>

#include "core/buffer.h"
#include "core/neighbourhood.h"
#include "rows/row_functions.h"

namespace ombrilo {

class Element {
 public:
  // A record's element without what cannot lie inside an image of this size. False when memory runs
  // out.
  Element(const KERNAL& record, const PixelRows& rows);

  // What repeated dilations or erosions by a symmetric shape amount to. Rows -reach..reach of it
  // have half_width(distance from the middle row) pixels on both sides of the middle, never more
  // than rows nearer to the middle row.
  template <class HalfWidth>
  Element(int64_t reach, HalfWidth half_width, const PixelRows& rows)
      : Element(static_cast<size_t>(2 * std::min<int64_t>(reach, rows.height - 1) + 1), rows) {
    if (!*this) return;
    const auto last = static_cast<int32_t>(capacity_ / 2);
    for (int32_t dy = -last; dy <= last; ++dy) {
      const int64_t half = std::min<int64_t>(half_width(dy < 0 ? -dy : dy), rows.width - 1);
      Add({dy, static_cast<int32_t>(-half), static_cast<int32_t>(2 * half + 1)});
    }
    Plan();
  }

  explicit operator bool() const { return runs_ && from_ && picked_; }

  bool empty() const { return run_count_ == 0; }
  const Reach& reach() const { return reach_; }
  // The extreme of no pixels at all.
  static uint8_t Neutral(bool dilate) { return dilate ? 0 : 255; }
  // A row for each prepared length but the first.
  FilterMemory memory() const {
    return {.derived = {.rows = static_cast<size_t>(length_count_ - 1)}};
  }
  // The first derived rows belong to another element of the same walk.
  void KeepBehind(const Element& other) { others_rows_ = other.length_count_ - 1; }

  // The parts of a frame's filter.
  void Begin(const WindowLayout& layout) { layout_ = layout; }
  void Prepare(bool dilate, uint8_t* row);
  void Combine(bool dilate, uint8_t* const* rows, size_t first, size_t count, uint8_t* to);

 private:
  struct Run {
    int32_t dy, dx, length;
  };
  static constexpr int kMaxLengths = 24;

  Element(size_t capacity, const PixelRows& rows);

  void Add(const Run& run);
  void JoinRuns();
  void Plan();
  bool IsNest();
  void ChooseLengths();
  void ChooseShifts();
  int LevelOf(int32_t length) const;
  uint8_t* Level(uint8_t* row, int level) const;

  size_t capacity_;
  Buffer<Run> runs_;
  Buffer<const uint8_t*> from_;
  Buffer<uint8_t> picked_;
  size_t run_count_ = 0;
  bool has_origin_ = false;
  simd::RectangleNest::Part parts_[simd::RectangleNest::kMost];
  size_t part_count_ = 0;  // 0: the element is no nest
  Reach reach_ = {};
  int32_t lengths_[kMaxLengths] = {1};
  int32_t shifts_[kMaxLengths] = {};
  int length_count_ = 1;
  int others_rows_ = 0;
  WindowLayout layout_ = {};
};

}  // namespace ombrilo
