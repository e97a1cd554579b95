#include "files/pixels_out.h"

#include <cstdlib>
#include <cstring>
#include <new>

#include "core/bytes.h"
#include "core/color_table.h"
#include "core/pixels.h"
#include "files/channel.h"

namespace omb {

using namespace ombrilo;

namespace {

bool IsDirect(uint16_t bit_count) { return bit_count == 16 || bit_count == 32; }

// Where the channels of a pixel of 16 or 32 bits lie.
Masks MasksOf(const DibView& view) {
  if (!view.core() && view.ReadU32(kInfoCompression) == kBitfields) {
    return {view.ReadU32(kInfoHeaderSize), view.ReadU32(kInfoHeaderSize + 4),
            view.ReadU32(kInfoHeaderSize + 8)};
  }
  return UsualMasks(view.bit_count());
}

void WidenRow(const uint8_t* from, uint16_t bits, size_t pixels, const Channel (&bgr)[3],
              uint8_t* to) {
  for (size_t x = 0; x < pixels; ++x, to += 3) {
    const uint32_t pixel = bits == 32 ? LoadU32(from + 4 * x) : LoadU16(from + 2 * x);
    for (size_t c = 0; c < 3; ++c) to[c] = bgr[c].Of(pixel);
  }
}

Image NarrowCopy(const PackedDib* dib) {
  return IsDirect(ViewToWrite(dib).bit_count()) ? TrueColor(dib) : nullptr;
}

Resolution ResolutionOf(const DibView& view) {
  if (view.core()) return {};
  return {static_cast<int32_t>(view.ReadU32(kInfoXPelsPerMeter)),
          static_cast<int32_t>(view.ReadU32(kInfoYPelsPerMeter))};
}

}  // namespace

DibView ViewToWrite(const PackedDib* dib) {
  const auto view = DibView::Open(dib);
  if (!view) throw FileError("the image to be written has no valid header");
  if (view->pixel_rows() == 0) throw FileError("the image to be written has no pixels");
  const uint16_t bits = view->bit_count();
  if (!view->indexed() && bits != 24 && !IsDirect(bits)) {
    throw FileError("images of " + std::to_string(bits) + " bits cannot be written");
  }
  return *view;
}

Image CopyOf(const DibView& view) {
  Image copy(static_cast<PackedDib*>(std::malloc(view.extent())));
  if (!copy) throw std::bad_alloc();
  view.Read(0, copy.get(), view.extent());
  return copy;
}

Image TrueColor(const PackedDib* dib) {
  const DibView view = ViewToWrite(dib);
  Image image = NewImage({view.width(), view.height(), 24}, ResolutionOf(view));
  const Dib to = *Dib::Open(image.get());
  const auto pixels = static_cast<size_t>(view.width());
  if (!IsDirect(view.bit_count())) {
    const Picture picture(dib);
    for (int32_t y = 0; y < to.height(); ++y) picture.ColorRow(y, RowFromTop(to, y));
    return image;
  }
  const Masks masks = MasksOf(view);
  const Channel bgr[3] = {Channel(masks.blue), Channel(masks.green), Channel(masks.red)};
  for (int32_t y = 0; y < to.height(); ++y) {
    WidenRow(view.row(y), view.bit_count(), pixels, bgr, to.row(y));
  }
  return image;
}

Picture::Picture(const PackedDib* dib)
    : copy_(NarrowCopy(dib)), view_(ViewToWrite(copy_ ? copy_.get() : dib)) {
  ReadColors(view_, 0, static_cast<uint32_t>(colors()), bgr_.data());
}

Resolution Picture::resolution() const { return ResolutionOf(view_); }

bool Picture::AllGray() const {
  for (int i = 0; i < colors(); ++i) {
    if (red(i) != green(i) || green(i) != blue(i)) return false;
  }
  return indexed();
}

bool Picture::GrayRamp(bool white_first) const {
  const int last = colors() - 1;
  for (int i = 0; i <= last; ++i) {
    if (blue(white_first ? last - i : i) != i * 255 / last) return false;
  }
  return AllGray();
}

void Picture::GrayRow(int32_t y, uint8_t* gray) const {
  UnpackIndices(row(y), bit_count(), static_cast<size_t>(width()), gray);
  for (int32_t x = 0; x < width(); ++x) gray[x] = blue(gray[x]);
}

void Picture::ColorRow(int32_t y, uint8_t* bgr) const {
  const auto pixels = static_cast<size_t>(width());
  if (!indexed()) {
    std::memcpy(bgr, row(y), 3 * pixels);
    return;
  }
  // The indices are in the last third of the row, where each is read before it is overwritten.
  uint8_t* indices = bgr + 2 * pixels;
  UnpackIndices(row(y), bit_count(), pixels, indices);
  for (size_t x = 0; x < pixels; ++x) {
    const int index = indices[x];
    bgr[3 * x] = blue(index);
    bgr[3 * x + 1] = green(index);
    bgr[3 * x + 2] = red(index);
  }
}

}  // namespace omb
