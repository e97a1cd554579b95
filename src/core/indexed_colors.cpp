#include "core/indexed_colors.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "core/pixels.h"
#include "rows/row_functions.h"

namespace ombrilo {

void IndexedColors::Snapshot(const DibView& dib, bool split) {
  const Palette palette = *MakeDIBPalette(dib);
  const bool gray = !split && palette.AllGray();
  if (std::memcmp(&palette, &palette_, sizeof palette) == 0 && gray == gray_) return;
  palette_ = palette;
  bit_count_ = dib.bit_count();
  gray_ = gray;
  identity_ = gray && palette.count == 256;
  if (gray) {
    LearnGrays();
  } else {
    nearest_->Learn(palette);
  }
}

void IndexedColors::LearnGrays() {
  int entry[256];  // the first one of a level, or none
  std::fill(std::begin(entry), std::end(entry), -1);
  for (int i = 255; i >= 0; --i) {
    level_of_[i] = palette_.bgr[i][0];
    if (i < palette_.count) entry[level_of_[i]] = i;
  }
  int below[256];  // the nearest level with an entry, at each level or below it
  for (int level = 0, last = -1; level < 256; ++level) {
    if (entry[level] >= 0) last = level;
    below[level] = last;
  }
  for (int level = 255, last = -1; level >= 0; --level) {
    if (entry[level] >= 0) last = level;
    const int less = below[level], more = last;
    const int down = less < 0 ? 256 : level - less, up = more < 0 ? 256 : more - level;
    const bool either = down == up;
    const int found = either ? std::min(entry[less], entry[more]) : entry[down < up ? less : more];
    index_of_[level] = static_cast<uint8_t>(found);
    identity_ = identity_ && level_of_[level] == level && found == level;
  }
}

void IndexedColors::Decode(const uint8_t* indices, size_t pixels, uint8_t* values) const {
  if (gray_) {
    if (indices != values) std::memcpy(values, indices, pixels);
    simd::Active().apply_table(values, pixels, level_of_);
  } else {
    simd::Active().expand_colors(indices, pixels, palette_.bgr[0], values);
  }
}

void IndexedColors::Encode(const uint8_t* values, size_t pixels, uint8_t* indices) {
  if (gray_) {
    std::memcpy(indices, values, pixels);
    simd::Active().apply_table(indices, pixels, index_of_);
  } else {
    nearest_->Find(values, 3, pixels, indices);
  }
}

void IndexedColors::DecodeRow(const uint8_t* row, size_t first, size_t pixels,
                              uint8_t* values) const {
  row += first * bit_count_ / 8;
  if (bit_count_ == 8) return Decode(row, pixels, values);
  uint8_t indices[kRun];
  for (size_t at = 0, count; at < pixels; at += count) {
    count = std::min(kRun, pixels - at);
    UnpackIndices(row + at * bit_count_ / 8, bit_count_, count, indices);
    Decode(indices, count, values + at * step());
  }
}

void IndexedColors::EncodeRow(const uint8_t* values, size_t first, size_t pixels, uint8_t* row) {
  if (bit_count_ == 8) return Encode(values, pixels, row + first);
  uint8_t indices[kRun];
  for (size_t at = 0, count; at < pixels; at += count) {
    count = std::min(kRun, pixels - at);
    Encode(values + at * step(), count, indices);
    PackIndices(indices, bit_count_, first + at, count, row);
  }
}

void IndexedColors::Settle(const uint8_t* values, size_t pixels, uint8_t* to) {
  uint8_t indices[kRun];
  for (size_t at = 0, count; at < pixels; at += count) {
    count = std::min(kRun, pixels - at);
    Encode(values + at * step(), count, indices);
    Decode(indices, count, to + at * step());
  }
}

}  // namespace ombrilo
