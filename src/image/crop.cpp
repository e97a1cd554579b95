// omb_crop and omb_cpydibrect: a rectangle of an image, pixels copied exactly.
//
// The two differ on purpose: crop takes an inclusive rectangle, requires at least one pixel and
// keeps biSizeImage; cpydibrect takes origin and size, allows empty pieces and clears biSizeImage.
#include <cstring>

#include "core/bytes.h"
#include "core/packed_dib.h"
#include "core/pixels.h"
#include "core/read_ahead.h"
#include "core/replacement.h"
#include "image/row_stream.h"
#include "rows/row_functions.h"

namespace ombrilo {

namespace {

bool CanCopyPixels(const DibView& source) { return source.indexed() || source.bit_count() == 24; }

// Copies rows from `first` on, from byte `at` of each on. What no cache holds is written with
// streaming stores: an ordinary one first reads the line that it overwrites.
void CopyBytes(const DibView& source, size_t at, int32_t first, const Dib& piece) {
  const simd::RowFunctions& functions = simd::Active();
  const size_t count = static_cast<size_t>(piece.width()) * piece.bit_count() / 8;
  // Of the source, as much is read as is written.
  const bool cached = 2 * static_cast<uint64_t>(piece.extent()) < kCached;
  const bool streams = !cached && count >= RowStream::kShortest;
  for (int32_t k = 0; k < piece.pixel_rows(); ++k) {
    const uint8_t* const from = source.row(first + k) + at;
    if (streams) {
      const bool last = k + 1 == piece.pixel_rows();
      functions.stream(from, count, piece.row(k), last ? from : source.row(first + k + 1) + at);
    } else {
      std::memcpy(piece.row(k), from, count);
    }
  }
  if (streams) functions.finish_stream();
}

// The piece's top row is row `y` from the top of the picture. The piece lies inside the source.
void CopyPiece(const DibView& source, size_t x, int32_t y, const Dib& piece) {
  const int32_t first_row = source.height() - y - piece.height();
  const uint16_t bits = source.bit_count();
  if (bits >= 8) return CopyBytes(source, x * bits / 8, first_row, piece);
  for (int32_t k = 0; k < piece.pixel_rows(); ++k) {
    CopyPixels(source.row(first_row + k), bits, x, static_cast<size_t>(piece.width()),
               piece.row(k));
  }
}

}  // namespace

}  // namespace ombrilo

uint32_t omb_crop(PackedDib** image, const OmbRect* rectangle) {
  using namespace ombrilo;
  const auto source = DibView::Open(image == nullptr ? nullptr : *image);
  if (!source || rectangle == nullptr || !CanCopyPixels(*source)) return 0;
  const OmbRect r = *rectangle;
  if (r.left < 0 || r.right < r.left || r.right >= source->width()) return 0;
  if (r.top < 0 || r.bottom < r.top || r.bottom >= source->height()) return 0;

  NewBlock block = NewBlock::Resized(*source, r.right - r.left + 1, r.bottom - r.top + 1,
                                     NewBlock::Rows::kPixelsComeNext);
  if (!block) return 0;
  CopyPiece(*source, static_cast<size_t>(r.left), r.top, block.dib());
  return block.Replace(image);
}

uintptr_t omb_cpydibrect(const PackedDib* image, int32_t x, uint32_t y, uint32_t w, uint32_t h) {
  using namespace ombrilo;
  const auto source = DibView::Open(image);
  if (!source) return 0;
  if (x < 0 || uint64_t{static_cast<uint32_t>(x)} + w > static_cast<uint32_t>(source->width())) {
    return 0;
  }
  if (uint64_t{y} + h > static_cast<uint32_t>(source->height())) return 0;
  if (h != 0 && !CanCopyPixels(*source)) return 0;

  NewBlock block = NewBlock::Resized(*source, w, h, NewBlock::Rows::kPixelsComeNext);
  if (!block) return 0;
  if (!source->core()) StoreU32(block.bytes() + kInfoSizeImage, 0);
  if (h != 0) CopyPiece(*source, static_cast<size_t>(x), static_cast<int32_t>(y), block.dib());
  return reinterpret_cast<uintptr_t>(block.Release());
}
