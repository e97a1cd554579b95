// The operations composed of dilations and erosions: omb_mathopen, omb_mathclose, omb_denoise,
// omb_pickedge, omb_gradientize, omb_opencompose, omb_tophat.
#include <algorithm>
#include <cstring>
#include <optional>

#include "core/pixels.h"
#include "morphology/dilate_erode.h"
#include "rows/row_functions.h"

namespace ombrilo {

namespace {

constexpr auto kErode = DilateErode::kErode;
constexpr auto kDilate = DilateErode::kDilate;

void Compose(PackedDib* image, std::initializer_list<DilateErode::Op> ops) {
  const auto dib = Dib::Open(image);
  if (!dib) return;
  DilateErode step(*dib, static_cast<int>(ops.size()));
  if (step) step.Run(ops);
}

// A copy of the pixel rows, as far as they lie inside the block. Operations that compare with it
// take width, height and row length as 16 bits.
class KeptRows {
 public:
  explicit KeptRows(const PixelRows& rows)
      : rows_(rows),
        size_(std::min<uint64_t>(rows.inside, uint64_t{rows.stride} * uint64_t(rows.height))),
        bytes_(NewScratchBuffer<uint8_t>(size_)) {}
  explicit operator bool() const { return bytes_ != nullptr; }

  void Keep() {
    if (size_ != 0) std::memcpy(bytes_.get(), rows_.first, size_);
  }
  // Turns the image's rows into results by `op(row, kept, bytes)` on the pixel bytes that lie
  // inside; with `padding`, the bytes after these are restored.
  template <class Op>
  void Combine(bool padding, Op&& op) const {
    for (int32_t y = 0; y < rows_.rows_inside(); ++y) {
      const uint8_t* const kept = bytes_.get() + size_t(y) * rows_.stride;
      const size_t bytes = rows_.Inside(y, rows_.row_bytes());
      op(rows_.row(y), kept, bytes);
      if (!padding) continue;
      std::memcpy(rows_.row(y) + bytes, kept + bytes, rows_.Inside(y, rows_.stride) - bytes);
    }
  }

 private:
  PixelRows rows_;
  size_t size_;
  Buffer<uint8_t> bytes_;
};

// Subtracts rows of an indexed image, color by color; results are pixels.
class IndexedDifference {
 public:
  explicit IndexedDifference(const PixelRows& rows)
      : width_(static_cast<size_t>(rows.width)),
        bit_count_(rows.bit_count),
        scratch_(NewScratchBuffer<uint8_t>(8 * std::max<size_t>(width_, 4))),
        colors_(rows.bit_count == 1 ? 4 : rows.pixels()) {}  // outcomes, not pixels, of one bit
  explicit operator bool() const { return colors_ && scratch_; }

  void Snapshot(const Dib& dib) {
    colors_.Snapshot(dib);
    if (bit_count_ != 1) return;
    const uint8_t own[4] = {0, 0, 1, 1};
    uint8_t other[4] = {0, 1, 0, 1};
    SubtractColors(other, own, 4);
    for (int i = 0; i < 4; ++i) outcome_[i] = other[i] != 0 ? 255 : 0;
  }

  // row = other - row, for as many pixels as `bytes` hold; the other bits of these come from
  // `other`.
  void SubtractFrom(const uint8_t* other, uint8_t* row, size_t bytes) {
    const size_t pixels = std::min(width_, bytes * 8 / bit_count_);
    if (bit_count_ == 1) {
      simd::Active().map_bit_pairs(other, outcome_, bytes, row);
      if (pixels % 8 != 0) {
        const uint8_t last = row[bytes - 1];
        row[bytes - 1] = other[bytes - 1];
        CopyPixels(&last, 1, 0, pixels % 8, &row[bytes - 1]);
      }
      return;
    }
    uint8_t* const indices = scratch_.get();
    uint8_t* const others = indices + width_;
    UnpackIndices(row, bit_count_, pixels, indices);
    UnpackIndices(other, bit_count_, pixels, others);
    SubtractColors(others, indices, pixels);
    if (bytes != 0) row[bytes - 1] = other[bytes - 1];
    PackIndices(others, bit_count_, pixels, row);
  }

 private:
  // indices -= others
  void SubtractColors(uint8_t* indices, const uint8_t* others, size_t pixels) {
    uint8_t* const first = scratch_.get() + 2 * width_;
    uint8_t* const second = first + 3 * std::max<size_t>(width_, 4);
    colors_.Decode(others, pixels, first);
    colors_.Decode(indices, pixels, second);
    // At 1 and 4 bits a negative difference wraps around instead of becoming 0. That is the
    // contract.
    const auto subtract =
        bit_count_ == 8 ? simd::Active().subtract_saturated : simd::Active().subtract_wrapped;
    subtract(first, pixels * colors_.step(), second);
    colors_.Encode(second, pixels, indices);
  }

  size_t width_;
  uint16_t bit_count_;
  Buffer<uint8_t> scratch_;  // a row of indices, another, and the colors of both
  uint8_t outcome_[4] = {};  // 1 bit: the difference's bytes by own index and the other
  IndexedColors colors_;
};

// Whether the 16-bit sizes of comparisons differ from the image's own. If they do not, a result is
// compared with the pixel that it replaces, and no rows are copied.
bool Cut(const Dib& dib) {
  const PixelRows rows = PixelRows::Of(dib), cut = PixelRows::Of16Bits(dib);
  return rows.width != cut.width || rows.height != cut.height;
}

void PickEdge(const Dib& dib) {
  const bool indexed = dib.indexed();
  if (!indexed && dib.bit_count() != 24) return;
  DilateErode step(dib, 1);
  if (!step) return;
  if (step.PixelsAreValues() && !Cut(dib)) return step.Run({kErode}, DilateErode::kSubtracted);

  const PixelRows rows = PixelRows::Of16Bits(dib);
  KeptRows unfiltered(rows);
  std::optional<IndexedDifference> difference;
  if (indexed) difference.emplace(rows);
  if (!unfiltered || (indexed && !*difference)) return;
  unfiltered.Keep();
  step.Run({kErode});
  // The colors are those after the erosion: a short table continues in the pixels.
  if (indexed) difference->Snapshot(dib);
  unfiltered.Combine(true, [&](uint8_t* row, const uint8_t* kept, size_t bytes) {
    if (indexed) {
      difference->SubtractFrom(kept, row, bytes);
    } else {
      simd::Active().subtract_from(kept, bytes, row);
    }
  });
}

}  // namespace

}  // namespace ombrilo

void omb_mathopen(PackedDib* image) {
  using namespace ombrilo;
  Compose(image, {kErode, kDilate});
}

void omb_mathclose(PackedDib* image) {
  using namespace ombrilo;
  Compose(image, {kDilate, kErode});
}

void omb_denoise(PackedDib* image) {
  using namespace ombrilo;
  Compose(image, {kErode, kDilate, kDilate, kErode});
}

void omb_pickedge(PackedDib* image) {
  if (const auto dib = ombrilo::Dib::Open(image)) ombrilo::PickEdge(*dib);
}

// The dilation alone, on purpose: nothing is subtracted from it.
void omb_gradientize(PackedDib* image) { omb_dilate(image); }

void omb_opencompose(PackedDib* image) {
  using namespace ombrilo;
  const auto dib = Dib::Open(image);
  if (!dib || dib->bit_count() != 24) return;
  DilateErode step(*dib, 2);
  if (!step) return;
  if (!Cut(*dib)) return step.Run({kErode, kDilate}, DilateErode::kAdded);

  KeptRows eroded(PixelRows::Of16Bits(*dib));
  if (!eroded) return;
  step.Run({kErode});
  eroded.Keep();
  step.Run({kDilate});
  eroded.Combine(false, [](uint8_t* row, const uint8_t* kept, size_t bytes) {
    simd::Active().add_saturated(kept, bytes, row);
  });
}

void omb_tophat(PackedDib* image) {
  using namespace ombrilo;
  const auto dib = Dib::Open(image);
  if (!dib || dib->bit_count() != 24) return;
  DilateErode step(*dib, 2);
  if (!step) return;
  if (!Cut(*dib)) return step.Run({kErode, kDilate}, DilateErode::kSubtracted);

  KeptRows unfiltered(PixelRows::Of16Bits(*dib));
  if (!unfiltered) return;
  unfiltered.Keep();
  step.Run({kErode, kDilate});
  unfiltered.Combine(false, [](uint8_t* row, const uint8_t* kept, size_t bytes) {
    simd::Active().subtract_from(kept, bytes, row);
  });
}
