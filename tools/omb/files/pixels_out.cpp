#include "files/pixels_out.h"

#include <cstring>

#include "core/color_table.h"
#include "core/pixels.h"
#include "core/replacement.h"

namespace omb {

using namespace ombrilo;

namespace {

bool IsDirect(uint16_t bit_count) { return bit_count == 16 || bit_count == 32; }

Image TrueColorCopy(const PackedDib* dib) {
  const DibView view = ViewToWrite(dib);
  if (!IsDirect(view.bit_count())) return nullptr;
  NewBlock block = NewBlock::Zeroed(view.extent());
  if (!block) throw FileError("there is not enough memory to convert the image");
  std::memcpy(block.bytes(), view.block(), view.extent());
  PackedDib* copy = block.Release();
  const bool done = omb_transformat(&copy) != 0;
  Image image(copy);
  // A core header keeps its bit count there and stays what no file format can hold.
  if (!done || DibHeader::Read(image.get()).bit_count != 24) {
    throw FileError("the image cannot be brought to 24 bits");
  }
  return image;
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

Picture::Picture(const PackedDib* dib)
    : copy_(TrueColorCopy(dib)), view_(ViewToWrite(copy_ ? copy_.get() : dib)) {
  ReadColors(view_, 0, static_cast<uint32_t>(colors()), bgr_.data());
}

Resolution Picture::resolution() const {
  if (view_.core()) return {};
  return {static_cast<int32_t>(view_.ReadU32(kInfoXPelsPerMeter)),
          static_cast<int32_t>(view_.ReadU32(kInfoYPelsPerMeter))};
}

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
  // The indices stand in the last third of the row, where each is read before it is written over.
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
