// omb_dilate, omb_erode.
//
// The square is anchored at its corner: a dilation looks at the 3x3 pixels that end at the pixel,
// an erosion at those that start at it. One undoes the other's shift, so that openings and closings
// come out in register.
//
// A one-bit image has three outcomes: the neighbourhood holds one index, the other, or both. These
// are computed once, by the rule for colors; pixels are then handled eight to a byte.
#include "morphology/dilate_erode.h"

#include <algorithm>
#include <cstring>

#include "rows/row_functions.h"

namespace ombrilo {

namespace {

constexpr Reach kDilateReach = {2, 0, 2, 0};
constexpr Reach kErodeReach = {0, 2, 0, 2};
constexpr Reach kBothReaches = {2, 2, 2, 2};

struct SquareFilter {
  DilateErode::Op op;
  DilateErode::Last last;
  size_t step = 0;

  void Begin(const WindowLayout& layout) { step = static_cast<size_t>(layout.step); }
  void Prepare(uint8_t*) {}
  void Combine(uint8_t* const* rows, size_t first, size_t count, uint8_t* to) {
    if (last == DilateErode::kSubtracted) {
      uint8_t results[4096];
      for (size_t i = 0; i < count; i += sizeof results) {
        const size_t n = std::min(count - i, sizeof results);
        Pick(rows, first + i, n, results);
        simd::Active().subtract_saturated(results, n, to + i);
      }
      return;
    }
    Pick(rows, first, count, to);
    if (last == DilateErode::kAdded) {
      const uint8_t* own = rows[op == DilateErode::kDilate ? 2 : 0] + first;
      simd::Active().add_saturated(own, count, to);
    }
  }
  void Pick(uint8_t* const* rows, size_t first, size_t count, uint8_t* to) const {
    const uint8_t* const from[] = {rows[0] + first, rows[1] + first, rows[2] + first};
    const simd::RowFunctions& functions = simd::Active();
    if (op == DilateErode::kDilate) {
      functions.rectangle_max(from, {3, 3, step, 2 * step}, count, to);
    } else {
      functions.rectangle_min(from, {3, 3, step, 0}, count, to);
    }
  }
};

// The same on rows of eight pixels to a byte. Missing neighbours are the nearest pixels here too.
struct SquareBitsFilter {
  DilateErode::Op op;
  int32_t width;       // in pixels
  uint8_t outcome[3];  // bytes of the resulting index if none, all or some pixels are index 1

  void Begin(const WindowLayout&) {}
  void Prepare(uint8_t* row) {
    if (op == DilateErode::kDilate) {
      *(row - 1) = (row[0] & 0x80) != 0 ? 0xFF : 0;
      return;
    }
    const size_t bytes = (static_cast<size_t>(width) + 7) / 8;
    const int last = (width - 1) % 8;
    const bool one = (row[bytes - 1] << last & 0x80) != 0;
    const uint8_t spare = static_cast<uint8_t>(0x7F >> last);
    row[bytes - 1] = static_cast<uint8_t>(one ? row[bytes - 1] | spare : row[bytes - 1] & ~spare);
    row[bytes] = one ? 0xFF : 0;
  }
  bool WholeRows() const { return true; }
  void Combine(uint8_t* const* rows, size_t, size_t count, uint8_t* to) {
    const uint8_t before = to[count - 1];
    (op == DilateErode::kDilate ? simd::Active().square_bits_left
                                : simd::Active().square_bits_right)(rows, outcome, count, to);
    const auto pixels = static_cast<uint8_t>(0xFF80 >> (width - 1) % 8);
    to[count - 1] = static_cast<uint8_t>((to[count - 1] & pixels) | (before & ~pixels));
  }
};

template <class Filter, class FilterFor>
void RunPasses(Neighbourhood& frame, std::initializer_list<DilateErode::Op> ops,
               FilterFor&& filter_for) {
  Filter filters[Neighbourhood::kMostPasses];
  Pass<Filter> passes[Neighbourhood::kMostPasses];
  int count = 0;
  for (const DilateErode::Op& op : ops) {
    filters[count] = filter_for(op);
    passes[count] = {op == DilateErode::kDilate ? kDilateReach : kErodeReach, Border::Nearest(),
                     &filters[count]};
    ++count;
  }
  frame.Run(passes, count);
}

}  // namespace

DilateErode::DilateErode(const Dib& dib, int most) : dib_(dib) {
  if (dib.bit_count() == 1) {
    PixelRows bytes = PixelRows::Of(dib);
    bytes.width = static_cast<int32_t>(bytes.row_bytes());
    bytes.bit_count = 8;
    colors_.emplace(3);  // the outcomes
    frame_.emplace(bytes, kBothReaches, FilterMemory{}, most);
  } else if (dib.indexed() || dib.bit_count() == 24) {
    frame_.emplace(dib, kBothReaches, FilterMemory{}, most);
  }
}

DilateErode::operator bool() const { return !frame_ || (*frame_ && (!colors_ || *colors_)); }

void DilateErode::Run(std::initializer_list<Op> ops, Last last) {
  if (!frame_) return;
  if (!colors_) {
    RunPasses<SquareFilter>(*frame_, ops, [&](const Op& op) {
      return SquareFilter{op, &op + 1 == ops.end() ? last : kResult};
    });
    return;
  }
  if (ops.size() > 1 && !TableHoldsPalette(dib_)) {  // each operation changes the colors
    for (const Op op : ops) Run({op});
    return;
  }
  colors_->Snapshot(dib_);
  const uint8_t(&color)[256][3] = colors_->palette().bgr;
  const auto byte = [&](const uint8_t* bgr) { return uint8_t(colors_->Find(bgr) != 0 ? 255 : 0); };
  RunPasses<SquareBitsFilter>(*frame_, ops, [&](Op op) {
    uint8_t mixed[3];
    for (int c = 0; c < 3; ++c) {
      const auto& [low, high] = std::minmax(color[0][c], color[1][c]);
      mixed[c] = op == kDilate ? high : low;
    }
    return SquareBitsFilter{op, dib_.width(), {byte(color[0]), byte(color[1]), byte(mixed)}};
  });
}

}  // namespace ombrilo

void omb_dilate(PackedDib* image) {
  const auto dib = ombrilo::Dib::Open(image);
  if (!dib) return;
  ombrilo::DilateErode step(*dib, 1);
  if (step) step.Run({ombrilo::DilateErode::kDilate});
}

void omb_erode(PackedDib* image) {
  const auto dib = ombrilo::Dib::Open(image);
  if (!dib) return;
  ombrilo::DilateErode step(*dib, 1);
  if (step) step.Run({ombrilo::DilateErode::kErode});
}
