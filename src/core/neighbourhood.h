// The neighbourhood frame: operations that compute a pixel from the pixels around it.
//
// The frame walks the image once and writes results in place of the pixels. A window runs ahead of
// the row it writes: copies of the few source rows that results still need, so that every result
// depends on source pixels alone. Extra memory is that window, whatever the image's height.
//
//   source row -> window row: bytes, 1 or 3 per pixel, with room for the missing columns
//              -> Prepare: what the filter derives from one row, kept with it
//   window rows -> Combine: one row of results -> image row
//
// An operation states its reach, its border rule, the memory that its filter needs, and the filter:
//
//   struct Filter {
//     void Begin(const WindowLayout&);                    // once per walk
//     void Prepare(uint8_t* row);                         // once per source row
//     void Combine(uint8_t* const* rows, size_t first,    // once per result row or for each piece
//                  size_t count, uint8_t* to);            // of it: bytes [first, first + count),
//   };                                                    // from `to` on
//
// A filter may have `bool WholeRows() const`; if that is true, it gets no pieces.
//
// Prepare runs once for each source row, in order, after its missing columns are filled in; with
// kSkip it runs for the neutral row first. A row takes the place of the one that leaves the window:
// once that is full, the derived bytes still hold what was derived from the row that leaves.
//
// rows[reach.before] is the row that results are for; each pointer is the row's first pixel.
// Indexed images come decoded and are encoded again (core/indexed_colors.h), so a filter sees color
// bytes only and is written once, with the distance between neighbours as its parameter.
//
// Several passes go over the image as one walk: each has its own window, whose rows are the results
// of the pass before, computed when they are needed.
#pragma once

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>

#include "core/buffer.h"
#include "core/indexed_colors.h"
#include "core/packed_dib.h"
#include "core/pixel_rows.h"
#include "core/read_ahead.h"

namespace ombrilo {

// How many rows before and after (in storage) and columns left and right.
struct Reach {
  int32_t before, after, left, right;
};

// What happens to pixels whose neighbourhood leaves the image.
struct Border {
  enum Kind {
    kZero,     // a band of pixels becomes 0, and so does the rows' padding
    kKeep,     // a band of pixels stays as it is
    kNearest,  // none: a missing neighbour is the nearest pixel of the image
    kSkip,     // none: a missing neighbour is `neutral`, a value that decides no result
  };
  Kind kind;
  Reach band;
  uint8_t neutral;

  static constexpr Border Zero(int32_t width) { return {kZero, {width, width, width, width}, 0}; }
  static constexpr Border Keep(const Reach& band) { return {kKeep, band, 0}; }
  static constexpr Border Nearest() { return {kNearest, {}, 0}; }
  static constexpr Border Skip(uint8_t neutral) { return {kSkip, {}, neutral}; }
};

// Memory for a filter: window rows, each with room for the missing columns, and further bytes.
struct FilterMemory {
  struct Part {
    size_t rows = 0, bytes = 0;
  };
  Part derived = {};  // with each window row
  Part scratch = {};  // once, shared by the passes of a walk
};

struct WindowLayout {
  // A piece of a row, which the last one may be longer than, not shorter: whole pixels, and a
  // multiple of the bytes that row functions compute at a time.
  static constexpr size_t kPiece = 1536;

  ptrdiff_t step;  // bytes from a pixel to the next
  size_t bytes;    // of the pixels of a row
  size_t first;    // bytes that are computed: [first, first + count)
  size_t count;
  ptrdiff_t pitch;       // from a window row to the first row derived from it, and on to the next
  size_t derived_bytes;  // from there on
  uint8_t* scratch;
  size_t scratch_bytes;
};

// One pass over an image.
template <class Filter>
struct Pass {
  Reach reach;
  Border border;
  Filter* filter;
};
template <class Filter>
Pass(Reach, Border, Filter*) -> Pass<Filter>;

class Neighbourhood {
 public:
  static constexpr int kMostPasses = 4;

  // Takes all memory for walks of up to this reach and this many passes; false when there is none.
  // Pixels of 1, 4 and 8 bits are indices into the image's color table...
  Neighbourhood(const Dib& dib, const Reach& reach, const FilterMemory& memory = {}, int passes = 1)
      : Neighbourhood(PixelRows::Of(dib), &dib, reach, memory, passes) {}
  // ... or, here, values of 1 byte (8 bits) or 3 (24 bits).
  Neighbourhood(const PixelRows& rows, const Reach& reach, const FilterMemory& memory = {},
                int passes = 1)
      : Neighbourhood(rows, nullptr, reach, memory, passes) {}

  explicit operator bool() const { return ready_; }

  // Indexed images: there are three channels even if all colors are gray. False when there is no
  // memory for them.
  [[nodiscard]] bool SplitChannels();
  IndexedColors& colors() { return *colors_; }

  // Whether windows hold the image's own bytes and no pass can change what these mean.
  bool PixelsAreValues();

  template <class Filter>
  void Run(const Pass<Filter>& pass) {
    Walk(&pass, 1);
  }
  // Runs at most `times` passes; stops after one that changes no byte.
  template <class Filter>
  void Repeat(int32_t times, const Pass<Filter>& pass) {
    bool changed = true;
    for (int32_t i = 1; i <= times && changed; ++i) {
      changed = false;
      Walk(&pass, 1, i == times ? nullptr : &changed);
    }
  }

  // Runs passes whose borders have no bands, one after the other. Only in the last pass does `to`
  // hold source pixels.
  template <class Filter>
  void Run(const Pass<Filter>* passes, int count) {
    for (int p = 0; p < count; ++p) {
      assert(passes[p].border.kind == Border::kNearest || passes[p].border.kind == Border::kSkip);
    }
    if (!colors_ || TableHoldsPalette(*dib_)) {
      Walk(passes, count);
    } else {  // the next pass takes its colors from this one's results
      for (int p = 0; p < count; ++p) Walk(passes + p, 1);
    }
  }

 private:
  // The source rows around the row that a pass computes next.
  struct Window {
    Reach reach;
    Border border;
    uint8_t* slots;     // a ring, and after it the neutral row
    uint8_t** rows;     // from the first to the last within reach
    int32_t ring;       // how many rows that is
    int64_t done;       // result rows that the window has been moved on to
    int64_t taken;      // source rows that have entered it, missing ones after the last included
    int32_t next_slot;  // of the ring
  };

  Neighbourhood(const PixelRows& rows, const Dib* dib, const Reach& reach,
                const FilterMemory& memory, int passes);

  template <class Filter>
  void Walk(const Pass<Filter>* passes, int count, bool* changed = nullptr) {
    BeginWalk(passes[0].border.band);
    for (int p = 0; p < count; ++p) {
      const Window& window = BeginPass(p, passes[p].reach, passes[p].border);
      passes[p].filter->Begin(layout_);
      if (passes[p].border.kind == Border::kSkip) {
        FillNeutralRow(window);
        passes[p].filter->Prepare(NeutralRow(window));
      }
    }
    const Window& window = windows_[count - 1];
    const Border& border = window.border;
    const int32_t end = rows_.height - border.band.after;
    const int32_t walked = rows_.rows_inside();
    for (int32_t y = 0; y < walked; ++y) {
      Advance(passes, count);
      if (y < border.band.before || y >= end || layout_.count == 0) {
        if (border.kind == Border::kZero) ZeroRow(y);
        continue;
      }
      uint8_t* const to = Target(y);
      CombineRow(*passes[count - 1].filter, window.rows, to);
      if (changed != nullptr && !*changed) {
        *changed = std::memcmp(window.rows[window.reach.before], to, layout_.bytes) != 0;
      }
      if (coded_ || to == result_ || border.kind == Border::kZero) Finish(y, to, border);
    }
  }

  // Long rows are computed in pieces, and meanwhile a row further on is fetched: the processor does
  // not foresee it beyond what it reads, and all of it at once gained nothing.
  template <class Filter>
  void CombineRow(Filter& filter, uint8_t* const* rows, uint8_t* to) const {
    const uint8_t* ahead = RowAhead();
    if constexpr (requires { filter.WholeRows(); }) {
      if (filter.WholeRows()) ahead = nullptr;
    }
    const size_t end = layout_.first + layout_.count;
    size_t at = layout_.first;
    for (; ahead != nullptr && end - at >= 2 * WindowLayout::kPiece; at += WindowLayout::kPiece) {
      ReadAhead(ahead + at, WindowLayout::kPiece);
      filter.Combine(rows, at, WindowLayout::kPiece, to + at);
    }
    if (ahead != nullptr) ReadAhead(ahead + at, end - at);
    filter.Combine(rows, at, end - at, to + at);
  }

  // Moves the window of the last of these passes on by one row.
  template <class Filter>
  void Advance(const Pass<Filter>* passes, int count) {
    if (count == 0) return;
    const int before = count - 1;
    Window& window = windows_[before];
    for (++window.done; window.taken < window.done + window.reach.after; ++window.taken) {
      if (window.taken >= rows_.height) {
        AppendMissing(window);
        continue;
      }
      const auto y = static_cast<int32_t>(window.taken);
      uint8_t* const row = NextSlot(window);
      if (before == 0) {
        Load(y, row);
      } else if (rows_.Inside(y, 1) == 0) {
        std::memset(row, 0, layout_.bytes);
      } else {
        Advance(passes, before);
        uint8_t* const to = coded_ ? result_ : row;
        passes[before - 1].filter->Combine(windows_[before - 1].rows, 0, layout_.bytes, to);
        Settle(y, to, row);
      }
      AddMargins(window, row);
      passes[before].filter->Prepare(row);
      Append(window, row);
    }
  }

  void BeginWalk(const Reach& band);
  Window& BeginPass(int p, const Reach& reach, const Border& border);
  size_t SlotsPerWindow() const {
    return size_t(max_reach_.before) + 1 + size_t(max_reach_.after) + 1;
  }
  uint8_t* NeutralRow(const Window& window) const;
  void FillNeutralRow(const Window& window) const;
  uint8_t* NextSlot(Window& window) const {
    uint8_t* slot = window.slots + size_t(window.next_slot) * slot_size_;
    if (++window.next_slot == window.ring) window.next_slot = 0;
    return slot;
  }
  const uint8_t* RowAhead() const;
  void Load(int32_t y, uint8_t* row);
  void Settle(int32_t y, const uint8_t* result, uint8_t* row);
  void AddMargins(const Window& window, uint8_t* row) const;
  void Append(Window& window, uint8_t* row) const {
    if (window.taken == 0) FillMissing(window, row);
    for (int32_t i = 1; i < window.ring; ++i) window.rows[i - 1] = window.rows[i];
    window.rows[window.ring - 1] = row;
  }
  void FillMissing(const Window& window, uint8_t* first) const;
  void AppendMissing(Window& window);
  void ZeroRow(int32_t y);
  uint8_t* Target(int32_t y);
  void Finish(int32_t y, uint8_t* to, const Border& border);

  PixelRows rows_;
  std::optional<Dib> dib_;               // where the color table is
  std::optional<IndexedColors> colors_;  // indexed images
  bool ready_ = false;
  bool split_ = false;
  size_t max_step_;
  Reach max_reach_;

  Buffer<uint8_t> memory_;
  Buffer<uint8_t*> pointers_;
  uint8_t* slots_ = nullptr;   // of all windows
  uint8_t* result_ = nullptr;  // a row of results that cannot be written in place
  size_t slot_size_ = 0;

  // Of the current walk.
  WindowLayout layout_ = {};
  Window windows_[kMostPasses];
  bool coded_ = false;  // pixels are indices that have to be decoded and encoded
};

// What filters with a zeroed band do to images of depths that they do not handle.
inline void ZeroPixels(const Dib& dib) {
  if (dib.pixel_rows() != 0) std::memset(dib.rows(), 0, dib.stride() * size_t(dib.pixel_rows()));
}

}  // namespace ombrilo
