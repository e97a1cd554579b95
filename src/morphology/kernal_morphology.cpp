// omb_DoKernalMorphDIB: dilation and erosion with any structuring element.
//
// An element is cut into horizontal runs. Extremes over a run's length are computed once per source
// row, for all rows of the element that have a run of that length, each from the extreme over a
// shorter length: two reads cover any length up to twice that. The 97 pixels of "Circle 11x11" cost
// 6 reads along rows and 11 across them.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <tuple>

#include "core/neighbourhood.h"
#include "rows/row_functions.h"

namespace ombrilo {

namespace {

struct Run {
  int32_t dy, dx, length;
};

// A structuring element, cut into runs and ready to be applied.
class Element {
 public:
  // The element as an image of this size can see it. False without memory.
  Element(const KERNAL& element, const PixelRows& rows)
      : capacity_(element.count < 0 ? 0 : static_cast<size_t>(element.count)),
        runs_(NewScratchBuffer<Run>(capacity_)),
        from_(NewScratchBuffer<const uint8_t*>(2 * capacity_)),
        picked_(NewScratchBuffer<uint8_t>(rows.row_bytes())) {
    if (!*this) return;
    CutIntoRuns(element, rows);
    ChooseLengths();
    ChooseShifts();
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

  void Begin(const WindowLayout& layout) { layout_ = layout; }

  void Prepare(bool dilate, uint8_t* row) {
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

  void Combine(bool dilate, uint8_t* const* rows, size_t first, size_t count, uint8_t* to) {
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
    // Where nothing moved the extreme from its start, the pixel stays.
    Pick(dilate, from_.get(), reads, count, picked_.get());
    std::memcpy(to, rows[reach_.before] + first, count);
    simd::Active().copy_unless(picked_.get(), Neutral(dilate), count, to);
  }

 private:
  static constexpr int kMaxLengths = 24;

  static void Pick(bool dilate, const uint8_t* const* from, size_t rows, size_t count,
                   uint8_t* to) {
    (dilate ? simd::Active().max_of : simd::Active().min_of)(from, rows, count, to);
  }

  void CutIntoRuns(const KERNAL& element, const PixelRows& rows) {
    for (size_t i = 0; i < capacity_; ++i) {
      const int32_t dx = element.offsets[2 * i], dy = element.offsets[2 * i + 1];
      // Always outside the image: skipped for every pixel.
      if (std::abs(int64_t{dx}) >= rows.width || std::abs(int64_t{dy}) >= rows.height) continue;
      runs_[run_count_++] = {dy, dx, 1};
      has_origin_ = has_origin_ || (dx == 0 && dy == 0);
      reach_.before = std::max(reach_.before, -dy);
      reach_.after = std::max(reach_.after, dy);
      reach_.left = std::max(reach_.left, -dx);
      reach_.right = std::max(reach_.right, dx);
    }
    std::sort(runs_.get(), runs_.get() + run_count_, [](const Run& a, const Run& b) {
      return std::tie(a.dy, a.dx) < std::tie(b.dy, b.dx);
    });
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

  // Lengths in ascending order, each at most twice the one before: those of the runs and those on
  // the way there; of an element with very many, powers of two.
  void ChooseLengths() {
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

  // Where the extreme from the first pixel on over a prepared length stands. The rows are shifted
  // so that runs around the origin find theirs at the pixel itself: vectors then start where cache
  // lines do.
  uint8_t* Level(uint8_t* row, int level) const {
    return row + level * layout_.pitch + shifts_[level] * layout_.step;
  }

  void ChooseShifts() {
    for (size_t i = 0; i < run_count_; ++i) {
      const Run& run = runs_[i];
      const int level = LevelOf(run.length);
      // A shift within the length leaves the row within the window's.
      if (level != 0 && run.dx <= 0 && -run.dx < lengths_[level]) shifts_[level] = -run.dx;
    }
  }

  // The longest prepared length that a run has room for.
  int LevelOf(int32_t length) const {
    int level = length_count_ - 1;
    while (lengths_[level] > length) --level;
    return level;
  }

  size_t capacity_;
  Buffer<Run> runs_;
  Buffer<const uint8_t*> from_;
  Buffer<uint8_t> picked_;
  size_t run_count_ = 0;
  bool has_origin_ = false;
  Reach reach_ = {};
  int32_t lengths_[kMaxLengths] = {1};
  int32_t shifts_[kMaxLengths] = {};
  int length_count_ = 1;
  WindowLayout layout_ = {};
};

struct ElementFilter {
  Element* element;
  bool dilate;

  void Begin(const WindowLayout& layout) { element->Begin(layout); }
  void Prepare(uint8_t* row) { element->Prepare(dilate, row); }
  void Combine(uint8_t* const* rows, size_t first, size_t count, uint8_t* to) {
    element->Combine(dilate, rows, first, count, to);
  }
};

}  // namespace

}  // namespace ombrilo

int32_t omb_DoKernalMorphDIB(PackedDib* image, int32_t bits, int32_t op, const KERNAL* element,
                             int32_t iterations) {
  using namespace ombrilo;
  enum Op { kErode, kDilate, kOpen, kClose };
  const auto dib = Dib::Open(image);
  if (!dib || element == nullptr || (element->offsets == nullptr && element->count > 0)) return 0;
  if ((bits != 8 && bits != 24) || op < kErode || op > kClose) return 0;

  // `bits` is believed; the header's bit count only decides how long a row is.
  const PixelRows rows = PixelRows::WithPlanes(*dib, static_cast<uint16_t>(dib->header().width),
                                               static_cast<uint16_t>(bits));
  if (dib->ReadU16(kInfoPlanes) == 0 || !rows.Fits(*dib)) return 0;
  if (iterations < 1) return 1;

  Element shape(*element, rows);
  if (!shape) return 0;
  if (shape.empty()) return 1;
  const bool composed = op == kOpen || op == kClose;
  Neighbourhood frame(rows, shape.reach(), shape.memory(), composed ? 2 : 1);
  if (!frame) return 0;
  ElementFilter filters[2] = {{&shape, op == kDilate || op == kClose}, {&shape, op == kOpen}};
  Pass<ElementFilter> passes[2];
  for (int i = 0; i < 2; ++i) {
    const Border border = Border::Skip(Element::Neutral(filters[i].dilate));
    passes[i] = {shape.reach(), border, &filters[i]};
  }
  if (composed && iterations == 1) {
    frame.Run(passes, 2);
  } else {
    for (int i = 0; i < (composed ? 2 : 1); ++i) frame.Repeat(iterations, passes[i]);
  }
  return 1;
}
