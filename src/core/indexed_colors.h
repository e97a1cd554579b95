// The codec of indexed images: pixels as colors, and computed colors as pixels. Decoding goes
// through a snapshot of the color table, encoding through the nearest palette entry.
//
// A table whose entries are all gray needs one channel, and one look-up table per direction. Only a
// colored table pays for three channels and a search; the usual ramp from black to white costs
// nothing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "core/buffer.h"
#include "core/nearest_entry.h"
#include "core/packed_dib.h"

namespace ombrilo {

class IndexedColors {
 public:
  // Takes the memory that searches for about so many colors need; false when there is none. A table
  // that stays gray needs no searches.
  explicit IndexedColors(uint64_t pixels, bool searches = true) {
    if (searches) nearest_.emplace(pixels);
  }
  explicit operator bool() const { return !nearest_ || *nearest_; }

  // Takes the color table as it is now. `split` asks for three channels whatever the colors are.
  void Snapshot(const DibView& dib, bool split = false);

  // Bytes per pixel: 1 gray, or 3 in the order blue, green, red.
  size_t step() const { return gray_ ? 1 : 3; }

  // Indices are levels: decoding and encoding change nothing.
  bool identity() const { return identity_; }

  // Indices of one byte each.
  void Decode(const uint8_t* indices, size_t pixels, uint8_t* values) const;
  void Encode(const uint8_t* values, size_t pixels, uint8_t* indices);
  // Pixels of a row of the snapshot's depth, from column `first` on: a multiple of 8, for decoding.
  // Bits before and after those that are encoded keep their values.
  void DecodeRow(const uint8_t* row, size_t first, size_t pixels, uint8_t* values) const;
  void EncodeRow(const uint8_t* values, size_t first, size_t pixels, uint8_t* row);
  // The colors that are left of these after encoding and decoding.
  void Settle(const uint8_t* values, size_t pixels, uint8_t* to);
  // The index of one color, which has to be gray if the table is.
  uint8_t Find(const uint8_t* bgr) {
    return gray_ ? index_of_[bgr[0]] : nearest_->Find(bgr[0], bgr[1], bgr[2]);
  }
  const Palette& palette() const { return palette_; }

 private:
  void LearnGrays();

  std::optional<NearestEntry> nearest_;  // for colored tables
  Palette palette_ = {};
  uint16_t bit_count_ = 0;
  bool gray_ = false;
  bool identity_ = false;
  uint8_t level_of_[256] = {};  // gray tables: the level of an index
  uint8_t index_of_[256] = {};  // and the index nearest to a level
};

}  // namespace ombrilo
