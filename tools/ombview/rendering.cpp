#include "rendering.h"

#include <cstdio>
#include <cstring>
#include <new>
#include <vector>

#include "core/packed_dib.h"
#include "document.h"
#include "files/pixels_out.h"
#include "steps/steps.h"

namespace ombview {

namespace {

// Each pixel as a square of zoom x zoom.
omb::Image Enlarge(const PackedDib* image, const Viewport& viewport) {
  const omb::Picture picture(image);
  const Rect seen = viewport.VisibleScaled();
  const Point size = viewport.scaled();
  omb::Image result(omb_newdib(seen.width(), seen.height(), 24));
  if (!result) throw std::bad_alloc();
  const auto stride = static_cast<size_t>(omb_BytesPerLine(result.get()));
  std::vector<size_t> columns;
  for (int x = seen.left; x < seen.right; ++x) {
    columns.push_back(static_cast<size_t>(static_cast<long long>(x) * picture.width() / size.x));
  }
  std::vector<uint8_t> colors(3 * static_cast<size_t>(picture.width()));
  int expanded = -1;
  for (int y = seen.top; y < seen.bottom; ++y) {
    const auto from = static_cast<int>(static_cast<long long>(y) * picture.height() / size.y);
    uint8_t* row =
        omb_FindDIBBits(result.get()) + stride * static_cast<size_t>(seen.bottom - 1 - y);
    if (from == expanded) {
      std::memcpy(row, row + stride, stride);  // the row above, which is stored behind it
      continue;
    }
    picture.ColorRow(from, colors.data());
    expanded = from;
    for (const size_t column : columns) {
      std::memcpy(row, colors.data() + 3 * column, 3);
      row += 3;
    }
  }
  return result;
}

}  // namespace

omb::Image Render(const PackedDib* image, const Viewport& viewport) {
  if (viewport.zoom() >= 1) return Enlarge(image, viewport);
  const Rect seen = viewport.VisibleScaled();
  omb::Image piece = PieceOf(image, viewport.VisiblePixels());
  if (!piece || !omb::Replace(piece, [&](PackedDib** dib) {
        return omb_resize(dib, static_cast<uint32_t>(seen.width()),
                          static_cast<uint32_t>(seen.height()), OMB_RESIZE_BOX);
      })) {
    throw std::bad_alloc();
  }
  return piece;
}

omb::Image PieceOf(const PackedDib* image, const Rect& pixels) {
  const auto piece = [&](const PackedDib* dib) {
    return omb::Image(reinterpret_cast<PackedDib*>(omb_cpydibrect(
        dib, pixels.left, static_cast<uint32_t>(pixels.top), static_cast<uint32_t>(pixels.width()),
        static_cast<uint32_t>(pixels.height()))));
  };
  const int bits = omb_DIBBitCount(image);
  if (bits != 16 && bits != 32) return piece(image);
  PackedDib* copy = CopyOf(image).release();
  const bool done = omb_transformat(&copy) != 0;
  const omb::Image true_color(copy);
  return done ? piece(true_color.get()) : nullptr;
}

std::string ValueAt(const PackedDib* image, Point pixel) {
  const auto view = ombrilo::DibView::Open(image);
  if (!view) return {};
  const uint8_t* row = view->row(view->height() - 1 - pixel.y);
  const int bits = view->bit_count();
  const auto x = static_cast<size_t>(pixel.x);
  char text[60];
  if (bits == 16 || bits == 32) {
    uint32_t word = 0;
    std::memcpy(&word, row + x * static_cast<size_t>(bits) / 8, static_cast<size_t>(bits) / 8);
    std::snprintf(text, sizeof text, "0x%0*x", bits / 4, word);
    return text;
  }
  if (bits == 24) {
    const uint8_t* bgr = row + 3 * x;
    std::snprintf(text, sizeof text, "#%02x%02x%02x (%d, %d, %d)", bgr[2], bgr[1], bgr[0], bgr[2],
                  bgr[1], bgr[0]);
    return text;
  }
  const auto per_byte = static_cast<size_t>(8 / bits);
  const size_t shift = (per_byte - 1 - x % per_byte) * static_cast<size_t>(bits);
  const int index = row[x / per_byte] >> shift & ((1 << bits) - 1);
  const omb::Picture picture(image);
  std::snprintf(text, sizeof text, "#%02x%02x%02x (color %d)", picture.red(index),
                picture.green(index), picture.blue(index), index);
  return text;
}

}  // namespace ombview
