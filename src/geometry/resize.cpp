// omb_resize: an image in another size, resampled with a filter.
//
// First each row is brought to the new width, then columns of such rows to the new height. Only the
// rows in reach of the new row are kept. Across, 32 or 64 rows at a time are resized as columns, in
// pieces that stay in a near cache.
#include <algorithm>
#include <cstring>
#include <optional>

#include "core/color_table.h"
#include "core/palette.h"
#include "core/pixels.h"
#include "core/read_ahead.h"
#include "core/replacement.h"
#include "geometry/resize_axis.h"

namespace ombrilo {

namespace {

constexpr size_t kMostRows = simd::kMostTapRows;

template <class T>
Buffer<T> NewScratch(uint64_t count) {
  return count > SIZE_MAX / sizeof(T) ? nullptr : NewScratchBuffer<T>(static_cast<size_t>(count));
}

// Row y from the top of the picture. The direction matters: boxes are not symmetric where they end
// on a pixel's center.
int32_t StoredRow(const DibView& dib, int32_t y) { return dib.height() - 1 - y; }

// The rows of the source from the top of the picture down, as gray levels or as blue, green, red.
class SourceRows {
 public:
  explicit SourceRows(const DibView& source) : source_(source), channels_(1) {
    if (!source.indexed()) {
      channels_ = 3;
      as_stored_ = true;
      return;
    }
    const Palette palette = *MakeDIBPalette(source);
    if (omb_iscolorful(reinterpret_cast<const PackedDib*>(source.block())) != 0) {
      channels_ = 3;
      std::memcpy(table_, palette.bgr, sizeof palette.bgr);
      return;
    }
    as_stored_ = source.bit_count() == 8;
    for (int i = 0; i < palette.count; ++i) {
      // Entries are gray; what lies beyond a short table need not be.
      const uint8_t* c = palette.bgr[i];
      table_[i] = static_cast<uint8_t>((299 * c[2] + 587 * c[1] + 114 * c[0] + 500) / 1000);
      as_stored_ = as_stored_ && table_[i] == i;
    }
  }

  size_t channels() const { return channels_; }
  size_t bytes() const { return channels_ * static_cast<size_t>(source_.width()); }
  // Whether the stored bytes are the levels or colors.
  bool as_stored() const { return as_stored_; }
  const uint8_t* Stored(int32_t y) const { return source_.row(StoredRow(source_, y)); }

  // For pixels that are not stored as levels or colors.
  void Decode(int32_t y, uint8_t* to) const {
    const auto pixels = static_cast<size_t>(source_.width());
    if (channels_ == 1) {
      UnpackIndices(Stored(y), source_.bit_count(), pixels, to);
      simd::Active().apply_table(to, pixels, table_);
      return;
    }
    ForEachIndexRun(Stored(y), source_.bit_count(), pixels,
                    [&](size_t first, const uint8_t* indices, size_t count) {
                      simd::Active().expand_colors(indices, count, table_, to + 3 * first);
                    });
  }

 private:
  const DibView& source_;
  size_t channels_;
  bool as_stored_ = false;
  uint8_t table_[3 * 256 + 1];  // levels or colors of indices
};

// Rows brought to the new width, some at a time.
class AcrossResizer {
 public:
  // Takes its memory at once.
  AcrossResizer(ResizeAxis& axis, size_t channels)
      : functions_(simd::Active()),
        channels_(channels),
        most_pixels_(kPieceBytes / channels),
        most_columns_(std::max(most_pixels_, std::min(4 * axis.most_taps(), kMostColumns))),
        new_pixels_(static_cast<size_t>(axis.to())),
        most_pairs_((axis.most_taps() + 1) / 2),
        taps_(NewScratchBuffer<simd::ColumnTaps>(new_pixels_)) {
    pairs_ = NewScratch<simd::TapPair>(uint64_t{most_pairs_} * new_pixels_);
    if (!taps_ || !pairs_) return;
    for (size_t i = 0; i < new_pixels_; ++i) {
      const auto taps = axis.Find(static_cast<int32_t>(i), pairs_.get() + i * most_pairs_);
      taps_[i] = {static_cast<uint32_t>(taps.first), static_cast<uint32_t>(taps.count),
                  i * most_pairs_};
    }
    size_t longest = 0;
    for (size_t i = 0; i < new_pixels_; i = EndOfPiece(i)) {
      longest = std::max(longest, ColumnsOf(i, EndOfPiece(i)));
    }
    columns_ = NewScratch<uint8_t>(uint64_t{rows()} * channels_ * longest);
    results_ = NewScratchBuffer<uint8_t>(rows() * kPieceBytes);
  }
  explicit operator bool() const { return columns_ && results_; }

  // How many rows at a time, at most kMostRows.
  size_t rows() const { return functions_.tap_rows; }
  // Brings up to as many rows to the new width.
  void Resize(const uint8_t* const* from, size_t row_count, uint8_t* const* to) {
    const uint8_t* source[kMostRows];
    for (size_t r = 0; r < rows(); ++r) source[r] = from[std::min(r, row_count - 1)];
    for (size_t i = 0, end = EndOfPiece(0), next_end; i < new_pixels_; i = end, end = next_end) {
      next_end = end;
      if (end < new_pixels_) {
        // No prefetcher follows so many rows.
        next_end = EndOfPiece(end);
        const size_t next = channels_ * taps_[end].first;
        const size_t bytes = channels_ * ColumnsOf(end, next_end);
        for (size_t r = 0; r < row_count; ++r) ReadAhead<1>(source[r] + next, bytes);
      }
      const size_t first = taps_[i].first;
      functions_.rows_to_columns(source, channels_ * first, channels_ * ColumnsOf(i, end),
                                 columns_.get());
      functions_.weigh_columns(columns_.get(), first, taps_.get() + i, pairs_.get(), channels_,
                               end - i, results_.get());
      functions_.columns_to_rows(results_.get(), channels_ * i, channels_ * (end - i), row_count,
                                 to);
    }
  }

 private:
  // Of the new pixels of a piece at most. Of its source pixels, too, unless these are few beside
  // the taps of one new pixel: neighbouring pieces share source pixels. Then kMostColumns limits
  // the memory for them, unless a single new pixel needs more.
  static constexpr size_t kPieceBytes = 192, kMostColumns = 1024;

  size_t ColumnsOf(size_t i, size_t end) const {
    return size_t{taps_[end - 1].first} + taps_[end - 1].count - taps_[i].first;
  }
  size_t EndOfPiece(size_t i) const {
    size_t end = i + 1;
    while (end < new_pixels_ && end - i < most_pixels_ && ColumnsOf(i, end + 1) <= most_columns_) {
      ++end;
    }
    return end;
  }

  const simd::RowFunctions& functions_;
  size_t channels_, most_pixels_, most_columns_, new_pixels_, most_pairs_;
  Buffer<simd::ColumnTaps> taps_;
  Buffer<simd::TapPair> pairs_;
  Buffer<uint8_t> columns_, results_;
};

class Resizer {
 public:
  // Takes its memory at once.
  Resizer(const SourceRows& source, ResizeAxis& across, ResizeAxis& down)
      : source_(source), down_(down), height_(down.from()) {
    const size_t line = source.channels() * static_cast<size_t>(across.to());
    if (across.changes()) {
      across_.emplace(across, source.channels());
      if (!*across_) return;
    }
    // Rows come in batches, or one by one if their width stays.
    batch_ = std::min<size_t>(across_ ? across_->rows() : 1, static_cast<size_t>(height_));
    kept_ = down.changes() ? down.most_taps() + batch_ : 0;
    line_ = line;
    const bool decodes = across_ && !source.as_stored();
    pairs_ = NewScratchBuffer<simd::TapPair>((down.most_taps() + 1) / 2);
    taps_ = NewScratchBuffer<const uint8_t*>(down.most_taps());
    decoded_ = NewScratch<uint8_t>(decodes ? uint64_t{batch_} * source.bytes() : 0);
    lines_ = NewScratch<uint8_t>(Aliased() ? 0 : uint64_t{kept_} * line_);
    ready_ = pairs_ && taps_ && decoded_ && lines_;
  }
  explicit operator bool() const { return ready_; }

  void Run(const Dib& to) {
    if (kept_ == 0) {
      for (int32_t y = 0; y < height_; y += static_cast<int32_t>(batch_)) {
        uint8_t* rows[kMostRows];
        const size_t count = CountAt(y);
        for (size_t r = 0; r < count; ++r)
          rows[r] = to.row(StoredRow(to, y + static_cast<int32_t>(r)));
        MakeLines(y, count, rows);
      }
      return;
    }
    int32_t made = 0;  // lines
    for (int32_t y = 0; y < to.height(); ++y) {
      const ResizeAxis::Taps taps = down_.Find(y, pairs_.get());
      for (; made < taps.first + taps.count && !Aliased(); made += static_cast<int32_t>(batch_)) {
        uint8_t* rows[kMostRows];
        const size_t count = CountAt(made);
        for (size_t r = 0; r < count; ++r) rows[r] = Line(made + static_cast<int32_t>(r));
        MakeLines(made, count, rows);
      }
      for (int32_t k = 0; k < taps.count; ++k) {
        const int32_t row = taps.first + k;
        taps_[static_cast<size_t>(k)] = Aliased() ? source_.Stored(row) : Line(row);
      }
      simd::Active().weigh_rows(taps_.get(), pairs_.get(), static_cast<size_t>(taps.count), line_,
                                to.row(StoredRow(to, y)));
    }
  }

 private:
  // Whether the source's own rows are the lines.
  bool Aliased() const { return !across_ && source_.as_stored(); }
  size_t CountAt(int32_t y) const {
    return std::min(batch_, static_cast<size_t>(height_) - static_cast<size_t>(y));
  }
  uint8_t* Line(int32_t y) const { return lines_.get() + static_cast<size_t>(y) % kept_ * line_; }

  // Source rows from y on, brought to the new width.
  void MakeLines(int32_t y, size_t count, uint8_t* const* to) {
    const uint8_t* rows[kMostRows];
    for (size_t r = 0; r < count; ++r) {
      const int32_t row = y + static_cast<int32_t>(r);
      if (source_.as_stored()) {
        rows[r] = source_.Stored(row);
        if (!across_) std::memcpy(to[r], rows[r], line_);
      } else {
        uint8_t* const line = across_ ? decoded_.get() + r * source_.bytes() : to[r];
        source_.Decode(row, line);
        rows[r] = line;
      }
    }
    if (across_) across_->Resize(rows, count, to);
  }

  const SourceRows& source_;
  ResizeAxis& down_;
  int32_t height_;
  std::optional<AcrossResizer> across_;
  size_t batch_ = 0;
  size_t kept_ = 0;  // lines in the ring; 0 if they are the new rows
  size_t line_ = 0;  // bytes of a line
  Buffer<simd::TapPair> pairs_;
  Buffer<const uint8_t*> taps_;
  Buffer<uint8_t> decoded_;  // rows of a batch
  Buffer<uint8_t> lines_;    // a ring
  bool ready_ = false;
};

bool IsSize(uint32_t size) { return size >= 1 && size <= 32767; }

}  // namespace

}  // namespace ombrilo

uint32_t omb_resize(PackedDib** image, uint32_t width, uint32_t height, uint32_t filter) {
  using namespace ombrilo;
  if (!IsSize(width) || !IsSize(height)) return 0;
  if (filter < OMB_RESIZE_BOX || filter > OMB_RESIZE_LANCZOS) return 0;
  const auto source = DibView::Open(image == nullptr ? nullptr : *image);
  if (!source || (!source->indexed() && source->bit_count() != 24)) return 0;
  if (source->pixel_rows() == 0) return 1;

  const SourceRows rows(*source);
  const auto kind = static_cast<OmbResizeFilter>(filter);
  ResizeAxis across(source->width(), static_cast<int32_t>(width), kind);
  ResizeAxis down(source->height(), static_cast<int32_t>(height), kind);
  if (!across || !down) return 0;
  Resizer resizer(rows, across, down);
  if (!resizer) return 0;
  const uint16_t bit_count = rows.channels() == 1 ? 8 : 24;
  NewBlock block = NewBlock::WithSizeAndDepth(*source, across.to(), down.to(), bit_count);
  if (!block) return 0;
  const Dib resized = block.dib();
  resizer.Run(resized);
  if (bit_count == 8) WriteGrayRamp(resized);
  return block.Replace(image);
}
