#include "picture.h"

#include <cstring>
#include <new>

#include "core/pixels.h"

namespace omb {

namespace {

// The images at hand were read or made by this program or the library: their headers are sound.
ombrilo::DibView ViewOf(const PackedDib* dib) { return ombrilo::DibView::Open(dib).value(); }

// The image at 24 bits where it has 16 or 32, otherwise null.
Image Converted(const PackedDib* dib) {
  const int bits = omb_DIBBitCount(dib);
  if (bits != 16 && bits != 32) return nullptr;
  PackedDib* copy = Copy(dib).release();
  const bool done = omb_transformat(&copy) != 0;
  Image converted(copy);
  if (!done) throw std::bad_alloc();
  return converted;
}

}  // namespace

Picture::Picture(const PackedDib* dib)
    : converted_(Converted(dib)), dib_(ViewOf(converted_ ? converted_.get() : dib)) {
  if (!indexed()) return;
  palette_ = ombrilo::MakeDIBPalette(dib_).value();
  indices_.resize(static_cast<size_t>(width()));
}

void Picture::ReadRow(int y, uint8_t* bgr) {
  const uint8_t* row = dib_.row(height() - 1 - y);
  const auto pixels = static_cast<size_t>(width());
  if (!indexed()) {
    std::memcpy(bgr, row, 3 * pixels);
    return;
  }
  ombrilo::UnpackIndices(row, dib_.bit_count(), pixels, indices_.data());
  for (const uint8_t index : indices_) {
    const uint8_t* color = palette_.bgr[index];
    for (int c = 0; c < 3; ++c) *bgr++ = color[c];
  }
}

bool Picture::IsGray() {
  if (indexed()) return palette_.AllGray();
  std::vector<uint8_t> row(3 * static_cast<size_t>(width()));
  for (int y = 0; y < height(); ++y) {
    ReadRow(y, row.data());
    for (size_t i = 0; i < row.size(); i += 3) {
      if (row[i] != row[i + 1] || row[i] != row[i + 2]) return false;
    }
  }
  return true;
}

Image Copy(const PackedDib* dib) {
  const ombrilo::DibView view = ViewOf(dib);
  Image copy(static_cast<PackedDib*>(std::malloc(view.extent())));
  if (!copy) throw std::bad_alloc();
  view.Read(0, copy.get(), view.extent());
  return copy;
}

bool SameBytes(const PackedDib* a, const PackedDib* b) {
  const ombrilo::DibView first = ViewOf(a), second = ViewOf(b);
  return first.extent() == second.extent() &&
         std::memcmp(first.block(), second.block(), first.extent()) == 0;
}

}  // namespace omb
