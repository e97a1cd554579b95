#include "rendering.h"

#include <algorithm>
#include <cstdint>
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

constexpr int64_t kStripPixels = 1'000'000;  // of the image that is reduced

// An image with the header and the colors of another one and `rows` rows, which the caller fills.
// Null when memory ran out.
omb::Image LikeIt(const ombrilo::DibView& image, int32_t rows) {
  const size_t head = image.prefix_size();
  omb::Image result(
      static_cast<PackedDib*>(std::malloc(head + image.stride() * static_cast<size_t>(rows))));
  if (!result) return nullptr;
  auto* bytes = reinterpret_cast<uint8_t*>(result.get());
  std::memcpy(bytes, image.block(), head);
  std::memcpy(bytes + ombrilo::kInfoHeight, &rows, sizeof rows);
  return result;
}

// Rows of an image of 16 or 32 bits as an image of its own, brought to 24 bits.
omb::Image TrueColorRows(const PackedDib* image, int top, int bottom) {
  const auto view = ombrilo::DibView::Open(image);
  omb::Image rows = view ? LikeIt(*view, bottom - top) : nullptr;
  if (!rows) return nullptr;
  std::memcpy(omb_FindDIBBits(rows.get()), view->row(view->height() - bottom),
              view->stride() * static_cast<size_t>(bottom - top));
  return omb::Replace(rows, omb_transformat) ? std::move(rows) : nullptr;
}

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
      std::memcpy(row, row + stride, stride);  // the row above, which is stored after it
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
  const Point size = {seen.width(), seen.height()};
  omb::Image result;
  Reduce(image, viewport.VisiblePixels(), size, [&](const PackedDib* strip, int top) {
    const auto rows = ombrilo::DibView::Open(strip);
    if (!result) result = LikeIt(*rows, size.y);  // all strips are of the same kind
    if (!result) throw std::bad_alloc();
    const size_t bytes = rows->stride() * static_cast<size_t>(rows->height());
    const int below = size.y - top - rows->height();
    std::memcpy(omb_FindDIBBits(result.get()) + rows->stride() * static_cast<size_t>(below),
                rows->rows(), bytes);
  });
  return result;
}

void Reduce(const PackedDib* image, const Rect& pixels, Point size, const TakeStrip& take) {
  const auto row_of = [&](int y) {
    return pixels.top + static_cast<int>(int64_t{y} * pixels.height() / size.y);
  };
  const int64_t rows = kStripPixels * size.y / (int64_t{pixels.width()} * pixels.height());
  for (int top = 0; top < size.y;) {
    const int bottom =
        static_cast<int>(std::min<int64_t>(top + std::max<int64_t>(1, rows), size.y));
    omb::Image strip = PieceOf(image, {pixels.left, row_of(top), pixels.right, row_of(bottom)});
    if (!strip || !omb::Replace(strip, [&](PackedDib** dib) {
          return omb_resize(dib, static_cast<uint32_t>(size.x), static_cast<uint32_t>(bottom - top),
                            OMB_RESIZE_BOX);
        })) {
      throw std::bad_alloc();
    }
    take(strip.get(), top);
    top = bottom;
  }
}

omb::Image PieceOf(const PackedDib* image, const Rect& pixels) {
  const auto piece = [&](const PackedDib* dib, int top) {
    return omb::Image(reinterpret_cast<PackedDib*>(omb_cpydibrect(
        dib, pixels.left, static_cast<uint32_t>(top), static_cast<uint32_t>(pixels.width()),
        static_cast<uint32_t>(pixels.height()))));
  };
  const int bits = omb_DIBBitCount(image);
  if (bits != 16 && bits != 32) return piece(image, pixels.top);
  const omb::Image rows = TrueColorRows(image, pixels.top, pixels.bottom);
  return rows ? piece(rows.get(), 0) : nullptr;
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
