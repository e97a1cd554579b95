#include "morphology/element.h"

#include <cstdlib>
#include <cstring>
#include <tuple>

#include "rows/row_functions.h"

namespace ombrilo {

namespace {

void Pick(bool dilate, const uint8_t* const* from, size_t rows, size_t count, uint8_t* to) {
  (dilate ? simd::Active().max_of : simd::Active().min_of)(from, rows, count, to);
}

}  // namespace

Element::Element(size_t capacity, const PixelRows& rows)
    : capacity_(capacity),
      runs_(NewScratchBuffer<Run>(capacity_)),
      from_(NewScratchBuffer<const uint8_t*>(2 * capacity_)),
      picked_(NewScratchBuffer<uint8_t>(rows.row_bytes())) {}

Element::Element(const KERNAL& record, const PixelRows& rows)
    : Element(record.count < 0 ? 0 : static_cast<size_t>(record.count), rows) {
  if (!*this) return;
  for (size_t i = 0; i < capacity_; ++i) {
    const int32_t dx = record.offsets[2 * i], dy = record.offsets[2 * i + 1];
    // Always outside the image: skipped for every pixel.
    if (std::abs(int64_t{dx}) >= rows.width || std::abs(int64_t{dy}) >= rows.height) continue;
    Add({dy, dx, 1});
  }
  JoinRuns();
  Plan();
}

void Element::Plan() {
  if (IsNest()) return;
  part_count_ = 0;
  ChooseLengths();
  ChooseShifts();
}

void Element::Prepare(bool dilate, uint8_t* row) {
  const ptrdiff_t left = reach_.left * layout_.step;
  const size_t all = layout_.bytes + static_cast<size_t>(left + reach_.right * layout_.step);
  for (int i = 1; i < length_count_; ++i) {
    const uint8_t* shorter = Level(row, i - 1) - left;
    const ptrdiff_t apart = (lengths_[i] - lengths_[i - 1]) * layout_.step;
    const uint8_t* from[] = {shorter, shorter + apart};
    Pick(dilate, from, 2, all - static_cast<size_t>((lengths_[i] - 1) * layout_.step),
         Level(row, i) - left);
  }
}

void Element::Combine(bool dilate, uint8_t* const* rows, size_t first, size_t count, uint8_t* to) {
  if (part_count_ != 0) {
    for (size_t k = 0; k < run_count_; ++k) from_[k] = rows[reach_.before + runs_[k].dy] + first;
    const simd::RowFunctions& functions = simd::Active();
    const auto step = static_cast<size_t>(layout_.step);
    const size_t left = static_cast<size_t>(reach_.left) * step;
    if (part_count_ == 1) {
      const simd::Rectangle rectangle = {parts_[0].rows, parts_[0].columns, step, left};
      return (dilate ? functions.rectangle_max : functions.rectangle_min)(from_.get(), rectangle,
                                                                          count, to);
    }
    const simd::RectangleNest nest = {step, left, part_count_, parts_};
    return (dilate ? functions.nest_max : functions.nest_min)(from_.get(), nest, count, to);
  }
  size_t reads = 0;
  for (size_t i = 0; i < run_count_; ++i) {
    const Run& run = runs_[i];
    const int level = LevelOf(run.length);
    const uint8_t* start = Level(rows[reach_.before + run.dy], level) + first;
    from_[reads++] = start + run.dx * layout_.step;
    if (const int32_t rest = run.length - lengths_[level]; rest != 0) {
      from_[reads++] = start + (run.dx + rest) * layout_.step;
    }
  }
  if (has_origin_) return Pick(dilate, from_.get(), reads, count, to);
  // Where no pixel moved the extreme from its start, the pixel stays.
  Pick(dilate, from_.get(), reads, count, picked_.get());
  std::memcpy(to, rows[reach_.before] + first, count);
  simd::Active().copy_unless(picked_.get(), Neutral(dilate), count, to);
}

void Element::Add(const Run& run) {
  runs_[run_count_++] = run;
  has_origin_ = has_origin_ || (run.dy == 0 && run.dx <= 0 && run.dx + run.length > 0);
  reach_.before = std::max(reach_.before, -run.dy);
  reach_.after = std::max(reach_.after, run.dy);
  reach_.left = std::max(reach_.left, -run.dx);
  reach_.right = std::max(reach_.right, run.dx + run.length - 1);
}

// Joins single pixels to runs.
void Element::JoinRuns() {
  std::sort(runs_.get(), runs_.get() + run_count_,
            [](const Run& a, const Run& b) { return std::tie(a.dy, a.dx) < std::tie(b.dy, b.dx); });
  size_t kept = 0;
  for (size_t i = 0; i < run_count_; ++i) {
    const Run& run = runs_[i];
    if (kept != 0 && runs_[kept - 1].dy == run.dy &&
        run.dx <= runs_[kept - 1].dx + runs_[kept - 1].length) {
      runs_[kept - 1].length = run.dx - runs_[kept - 1].dx + 1;
    } else {
      runs_[kept++] = run;
    }
  }
  run_count_ = kept;
}

// Sorts runs by length and groups equal ones, if each lies among the columns of longer ones. A
// column's have nothing to be combined along the row.
bool Element::IsNest() {
  if (run_count_ == 0 || !has_origin_) return false;
  std::sort(runs_.get(), runs_.get() + run_count_, [](const Run& a, const Run& b) {
    return std::tie(b.length, a.dy) < std::tie(a.length, b.dy);
  });
  const int32_t longest = runs_[0].length, shortest = runs_[run_count_ - 1].length;
  constexpr int64_t kMostStep = 3;
  if (longest == 1 || kMostStep * (longest - 1) > simd::kRectangleReach) return false;
  if (longest - shortest > simd::RectangleNest::kMostColumns) return false;
  for (size_t i = 0; i < run_count_; ++i) {
    const Run& run = runs_[i];
    const Run& wider = runs_[i == 0 ? 0 : i - 1];
    if (run.dx < wider.dx || run.dx + run.length > wider.dx + wider.length) return false;
    if (i == 0 || run.length != wider.length) {
      if (part_count_ == simd::RectangleNest::kMost) return false;
      parts_[part_count_++] = {0, static_cast<size_t>(run.dx - runs_[0].dx),
                               static_cast<size_t>(run.length)};
    }
    ++parts_[part_count_ - 1].rows;
  }
  return true;
}

// Chooses lengths in ascending order, each at most twice the one before: those of the runs and some
// in between. For an element that needs too many, they are powers of two.
void Element::ChooseLengths() {
  int32_t longest = 1;
  for (size_t i = 0; i < run_count_; ++i) longest = std::max(longest, runs_[i].length);
  for (;;) {
    const int32_t last = lengths_[length_count_ - 1];
    int32_t next = longest;  // the next longer run
    for (size_t i = 0; i < run_count_; ++i) {
      if (runs_[i].length > last) next = std::min(next, runs_[i].length);
    }
    if (last == longest) return;
    if (length_count_ == kMaxLengths) break;
    lengths_[length_count_++] = next - last > last ? 2 * last : next;
  }
  length_count_ = 1;
  while (lengths_[length_count_ - 1] <= longest / 2) {
    lengths_[length_count_] = 2 * lengths_[length_count_ - 1];
    ++length_count_;
  }
}

void Element::ChooseShifts() {
  for (size_t i = 0; i < run_count_; ++i) {
    const Run& run = runs_[i];
    const int level = LevelOf(run.length);
    // Shifted by less than the length, the row stays within its window row.
    if (level != 0 && run.dx <= 0 && -run.dx < lengths_[level]) shifts_[level] = -run.dx;
  }
}

// Where the extreme over a prepared length from the first pixel on is stored. The rows are shifted
// so that runs around the origin find theirs at the pixel itself: vectors then start where cache
// lines do.
uint8_t* Element::Level(uint8_t* row, int level) const {
  const int place = level == 0 ? 0 : others_rows_ + level;
  return row + place * layout_.pitch + shifts_[level] * layout_.step;
}

// The longest prepared length that a run has room for.
int Element::LevelOf(int32_t length) const {
  int level = length_count_ - 1;
  while (lengths_[level] > length) --level;
  return level;
}

}  // namespace ombrilo
