// The neighbourhood frame: operations that compute a pixel from the pixels around it.
//
// The frame walks the image once and writes results where the pixels stand. Ahead of the row it
// writes runs a window: copies of the few source rows that results still need, so that every result
// depends on source pixels alone. Extra memory is that window, whatever the image's height.
//
//   source row -> window row: bytes, 1 or 3 per pixel, with room for the missing columns
//              -> Prepare: what the filter derives from one row, kept behind it
//   window rows -> Combine: one row of results -> image row
//
// An operation states its reach, its border rule and a filter:
//
//   struct Filter {
//     void Begin(const WindowLayout&);                    // once per walk
//     void Prepare(uint8_t* row);                         // once per source row
//     void Combine(uint8_t* const* rows, size_t first,    // once per result row: bytes
//                  size_t count, uint8_t* to);            // [first, first + count), from `to` on
//   };
//
// rows[reach.before] is the row that results are for; each pointer is the row's first pixel.
// Indexed images come decoded and are encoded again (core/indexed_colors.h), so a filter sees color
// bytes only and is written once, with the distance between neighbours as its parameter.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>

#include "core/buffer.h"
#include "core/indexed_colors.h"
#include "core/packed_dib.h"
#include "core/pixel_rows.h"

namespace ombrilo {

// How many rows before and after (in storage) and columns left and right.
struct Reach {
  int32_t before, after, left, right;
};

// What becomes of pixels whose neighbourhood leaves the image.
struct Border {
  enum Kind {
    kZero,     // a band of pixels becomes 0, and so does the rows' padding
    kKeep,     // a band of pixels stays as it is
    kNearest,  // none: a missing neighbour is the nearest pixel of the image
    kSkip,     // none: a missing neighbour is `neutral`, a value that decides nothing
  };
  Kind kind;
  Reach band;
  uint8_t neutral;

  static constexpr Border Zero(int32_t width) { return {kZero, {width, width, width, width}, 0}; }
  static constexpr Border Keep(const Reach& band) { return {kKeep, band, 0}; }
  static constexpr Border Nearest() { return {kNearest, {}, 0}; }
  static constexpr Border Skip(uint8_t neutral) { return {kSkip, {}, neutral}; }
};

struct WindowLayout {
  ptrdiff_t step;   // bytes from a pixel to the next
  ptrdiff_t pitch;  // bytes from a window row to the first row derived from it, and so on
  size_t bytes;     // of the pixels of a row
  size_t first;     // bytes that are computed: [first, first + count)
  size_t count;
  uint8_t* spare;   // a window row of the filter's own, with derived rows; Border::kSkip has none
};

class Neighbourhood {
 public:
  // Takes all memory for walks of up to this reach, with `derived` derived rows per window row;
  // false when there is none. Pixels of 1, 4 and 8 bits are indices into the image's color table...
  Neighbourhood(const Dib& dib, const Reach& reach, int derived = 0)
      : Neighbourhood(PixelRows::Of(dib), &dib, reach, derived) {}
  // ... or, here, values of 1 byte (8 bits) or 3 (24 bits).
  Neighbourhood(const PixelRows& rows, const Reach& reach, int derived = 0)
      : Neighbourhood(rows, nullptr, reach, derived) {}

  explicit operator bool() const { return ready_; }

  // Indexed images: channels are told apart even if all colors are gray.
  void SplitChannels() { split_ = true; }
  IndexedColors& colors() { return *colors_; }

  // One walk. False if values taken as bytes all stayed as they were.
  template <class Filter>
  bool Run(const Reach& reach, const Border& border, Filter& filter) {
    const WindowLayout layout = Begin(reach, border);
    filter.Begin(layout);
    if (border.kind == Border::kSkip) filter.Prepare(NeutralRow(border.neutral));
    const int32_t top = border.band.before;
    const int32_t end = rows_.height - border.band.after;
    const int32_t walked = rows_.rows_inside();
    bool changed = false;
    for (int32_t y = 0, loaded = 0; y < walked; ++y) {
      for (; loaded < rows_.height && loaded - y <= reach.after; ++loaded) {
        filter.Prepare(Load(loaded, border));
      }
      if (y < top || y >= end || layout.count == 0) {
        if (border.kind == Border::kZero) ZeroRow(y);
        continue;
      }
      CollectRows(y, border);
      uint8_t* const to = Target(y);
      filter.Combine(collected_.get(), layout.first, layout.count, to + layout.first);
      changed = changed || std::memcmp(collected_[reach.before], to, layout.bytes) != 0;
      Finish(y, to, border);
    }
    return changed;
  }

 private:
  Neighbourhood(const PixelRows& rows, const Dib* dib, const Reach& reach, int derived);

  WindowLayout Begin(const Reach& reach, const Border& border);
  uint8_t* Slot(int32_t i) const { return window_ + size_t(i) * slot_size_; }
  uint8_t* NeutralRow(uint8_t value);
  uint8_t* Load(int32_t y, const Border& border);
  void CollectRows(int32_t y, const Border& border);
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
  Buffer<uint8_t*> collected_;
  uint8_t* window_ = nullptr;   // slots of a ring, and the neutral row's behind them
  uint8_t* result_ = nullptr;   // a row of results that cannot be written in place
  uint8_t* indices_ = nullptr;  // a row of indices
  size_t slot_size_ = 0;

  // Of the current walk.
  Reach reach_ = {};
  WindowLayout layout_ = {};
  int32_t ring_ = 0;    // slots in use
  bool coded_ = false;  // pixels are indices that have to be decoded and encoded
};

// For filters with a zeroed band: what they make of depths that they do not handle.
inline void ZeroPixels(const Dib& dib) {
  if (dib.pixel_rows() != 0) std::memset(dib.rows(), 0, dib.stride() * size_t(dib.pixel_rows()));
}

}  // namespace ombrilo
