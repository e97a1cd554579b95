// omb_dilate, omb_erode.
//
// The square hangs on its corner: a dilation looks at the 3x3 pixels that end at the pixel, an
// erosion at those that start at it, so that one undoes the other's shift and openings and closings
// come out in register. Rows are reduced before columns.
//
// One-bit images have three outcomes per image: the neighbourhood holds one index, the other, or
// both. These are computed once, through the color rule; pixels are then bits in words.
#include "morphology/dilate_erode.h"

#include <algorithm>

#include "rows/row_functions.h"

namespace ombrilo {

namespace {

constexpr Reach kDilateReach = {2, 0, 2, 0};
constexpr Reach kErodeReach = {0, 2, 0, 2};
constexpr Reach kBothReaches = {2, 2, 2, 2};

struct SquareFilter {
  bool dilate;
  WindowLayout layout = {};

  void Pick(const uint8_t* const (&from)[3], size_t count, uint8_t* to) const {
    (dilate ? rows::Active().max_of : rows::Active().min_of)(from, 3, count, to);
  }
  void Begin(const WindowLayout& l) { layout = l; }
  void Prepare(uint8_t* row) {
    const ptrdiff_t next = dilate ? -layout.step : layout.step;
    Pick({row, row + next, row + 2 * next}, layout.bytes, row + layout.pitch);
  }
  void Combine(uint8_t* const* rows, size_t first, size_t count, uint8_t* to) {
    const size_t at = static_cast<size_t>(layout.pitch) + first;
    Pick({rows[0] + at, rows[1] + at, rows[2] + at}, count, to);
  }
};

// The same on rows of eight pixels to a byte. Missing neighbours are the nearest pixels here too.
struct SquareBitsFilter {
  bool dilate;
  int32_t width;       // in pixels
  uint8_t outcome[3];  // bytes of the index that stands where none, all and some are index 1
  ptrdiff_t pitch = 0;

  void Begin(const WindowLayout& l) { pitch = l.pitch; }
  void Prepare(uint8_t* row) {
    const size_t bytes = (static_cast<size_t>(width) + 7) / 8;
    uint8_t* const any = row + pitch;
    uint8_t* const all = row + 2 * pitch;
    if (dilate) {
      *(row - 1) = (row[0] & 0x80) != 0 ? 0xFF : 0;
      rows::Active().spread_bits_left(row, bytes, any, all);
      return;
    }
    const int last = (width - 1) % 8;
    const bool one = (row[bytes - 1] << last & 0x80) != 0;
    const uint8_t behind = static_cast<uint8_t>(0x7F >> last);
    row[bytes - 1] = static_cast<uint8_t>(one ? row[bytes - 1] | behind : row[bytes - 1] & ~behind);
    row[bytes] = one ? 0xFF : 0;
    rows::Active().spread_bits_right(row, bytes, any, all);
  }
  void Combine(uint8_t* const* rows, size_t, size_t count, uint8_t* to) {
    const uint8_t* const any[] = {rows[0] + pitch, rows[1] + pitch, rows[2] + pitch};
    const uint8_t* const all[] = {any[0] + pitch, any[1] + pitch, any[2] + pitch};
    const uint8_t before = to[count - 1];
    rows::Active().choose_bits(any, all, outcome, count, to);
    const auto pixels = static_cast<uint8_t>(0xFF80 >> (width - 1) % 8);
    to[count - 1] = static_cast<uint8_t>((to[count - 1] & pixels) | (before & ~pixels));
  }
};

}  // namespace

DilateErode::DilateErode(const Dib& dib) : dib_(dib) {
  if (dib.bit_count() == 1) {
    PixelRows bytes = PixelRows::Of(dib);
    bytes.width = static_cast<int32_t>(bytes.row_bytes());
    bytes.bit_count = 8;
    colors_.emplace();
    frame_.emplace(bytes, kBothReaches, 2);
  } else if (dib.indexed() || dib.bit_count() == 24) {
    frame_.emplace(dib, kBothReaches, 1);
  }
}

DilateErode::operator bool() const { return !frame_ || (*frame_ && (!colors_ || *colors_)); }

void DilateErode::Run(bool dilate) {
  if (!frame_) return;
  const Reach& reach = dilate ? kDilateReach : kErodeReach;
  if (!colors_) {
    SquareFilter filter = {dilate};
    frame_->Run(reach, Border::Nearest(), filter);
    return;
  }
  colors_->Snapshot(dib_);
  const uint8_t(&color)[256][3] = colors_->palette().bgr;
  uint8_t mixed[3];
  for (int c = 0; c < 3; ++c) {
    mixed[c] = dilate ? std::max(color[0][c], color[1][c]) : std::min(color[0][c], color[1][c]);
  }
  const auto byte = [&](const uint8_t* bgr) { return uint8_t(colors_->Find(bgr) != 0 ? 255 : 0); };
  SquareBitsFilter filter = {dilate, dib_.width(), {byte(color[0]), byte(color[1]), byte(mixed)}};
  frame_->Run(reach, Border::Nearest(), filter);
}

}  // namespace ombrilo

void omb_dilate(PackedDib* image) {
  const auto dib = ombrilo::Dib::Open(image);
  if (!dib) return;
  ombrilo::DilateErode step(*dib);
  if (step) step.Dilate();
}

void omb_erode(PackedDib* image) {
  const auto dib = ombrilo::Dib::Open(image);
  if (!dib) return;
  ombrilo::DilateErode step(*dib);
  if (step) step.Erode();
}
