// omb_topixels: an image's pixels in an array of the host.
#include <algorithm>
#include <cstring>
#include <optional>

#include "core/color_table.h"
#include "core/high_color.h"
#include "core/pixels.h"
#include "image/host_pixels.h"
#include "image/row_stream.h"
#include "rows/row_functions.h"

namespace ombrilo {

namespace {

constexpr uint32_t kHalf = 128 * 100;  // gray 128, before it is divided by 100

// Converts blue, green, red to any format.
void WriteBgr(uint32_t format, const uint8_t* bgr, size_t pixels, uint8_t* to) {
  const simd::RowFunctions& rows = simd::Active();
  switch (format) {
    case OMB_PIXELS_BIT:
      if (pixels % 8 != 0) to[pixels / 8] = 0;
      rows.threshold(bgr, pixels, kHalf, to);
      break;
    case OMB_PIXELS_GRAY:
      rows.gray_percent(bgr, pixels, to);
      break;
    case OMB_PIXELS_BGR:
      std::memcpy(to, bgr, 3 * pixels);
      break;
    case OMB_PIXELS_RGB:
      rows.swap_red_blue(bgr, pixels, to);
      break;
    case OMB_PIXELS_BGRA:
    case OMB_PIXELS_RGBA:
      rows.add_alpha(bgr, pixels, IsRedFirst(format), to);
      break;
  }
}

// What indices become: gray levels, bits or colors.
class Lookup {
 public:
  Lookup(const DibView& dib, uint32_t format) : bits_(dib.bit_count()), format_(format) {
    const uint32_t count = ColorsOfDepth(bits_);
    ReadColors(dib, 0, count, colors_);
    simd::Active().gray_percent(colors_, count, levels_);
    if (format == OMB_PIXELS_BIT) {
      for (uint8_t& level : levels_) level = level >= 128;
    }
    for (uint32_t i = 0; i < count; ++i) {
      as_it_is_ &= levels_[i] == i;
      all_gray_ &= colors_[3 * i] == colors_[3 * i + 1] && colors_[3 * i] == colors_[3 * i + 2];
    }
    // Four-byte pixels are put in order when they get their alpha.
    if (format == OMB_PIXELS_RGB) {
      for (uint32_t i = 0; i < count; ++i) std::swap(colors_[3 * i], colors_[3 * i + 2]);
    }
  }

  void WriteRow(const uint8_t* row, size_t pixels, uint8_t* to) const {
    if (as_it_is_ && format_ == bits_) {
      if (pixels % 8 != 0 && bits_ == 1) to[pixels / 8] = 0;
      CopyPixels(row, bits_, 0, pixels, to);
      return;
    }
    const size_t step = BitsOfFormat(format_);
    if (as_it_is_ && all_gray_ && bits_ == 8 && step >= 24) {  // needs no copy of the indices
      const simd::RowFunctions& rows = simd::Active();
      return step == 24 ? rows.spread(row, pixels, to) : rows.spread_opaque(row, pixels, to);
    }
    ForEachIndexRun(row, bits_, pixels, [&](size_t first, uint8_t* indices, size_t count) {
      WriteRun(indices, count, to + first * step / 8);
    });
  }

 private:
  void WriteRun(uint8_t* indices, size_t count, uint8_t* to) const {
    const simd::RowFunctions& rows = simd::Active();
    uint8_t bgr[3 * kRun];
    switch (format_) {
      case OMB_PIXELS_BIT:
        rows.apply_table(indices, count, levels_);
        if (count % 8 != 0) to[count / 8] = 0;
        PackIndices(indices, 1, count, to);
        break;
      case OMB_PIXELS_GRAY:
        rows.apply_table(indices, count, levels_);
        std::memcpy(to, indices, count);
        break;
      case OMB_PIXELS_BGR:
      case OMB_PIXELS_RGB:
        if (MakeLevels(indices, count)) return rows.spread(indices, count, to);
        rows.expand_colors(indices, count, colors_, to);
        break;
      default:
        if (MakeLevels(indices, count)) return rows.spread_opaque(indices, count, to);
        rows.expand_colors(indices, count, colors_, bgr);
        rows.add_alpha(bgr, count, IsRedFirst(format_), to);
    }
  }

  // Indices become gray levels, if all colors are gray: spreading these takes half of the time of
  // looking colors up, or less.
  bool MakeLevels(uint8_t* indices, size_t count) const {
    if (all_gray_ && !as_it_is_) simd::Active().apply_table(indices, count, levels_);
    return all_gray_;
  }

  uint16_t bits_;
  uint32_t format_;
  bool as_it_is_ = true;  // levels are the indices
  bool all_gray_ = true;
  uint8_t colors_[3 * 256 + 1] = {};
  uint8_t levels_[256] = {};
};

void WriteHighColors(const HighColor& colors, uint16_t bits, uint32_t format, const uint8_t* row,
                     size_t pixels, uint8_t* to) {
  uint8_t bgr[3 * kRun];
  for (size_t first = 0; first < pixels; first += kRun) {
    const size_t count = std::min(kRun, pixels - first);
    colors.ToBgr(row + first * bits / 8, count, bgr);
    WriteBgr(format, bgr, count, to + first * BitsOfFormat(format) / 8);
  }
}

}  // namespace

}  // namespace ombrilo

uint32_t omb_topixels(const PackedDib* dib, uint32_t format, void* pixels, intptr_t stride) {
  using namespace ombrilo;
  const auto source = DibView::Open(dib);
  if (!source || pixels == nullptr || source->pixel_rows() == 0) return 0;
  const uint16_t bits = source->bit_count();
  const bool high = bits == 16 || bits == 32;
  if (!source->indexed() && !high && bits != 24) return 0;
  const int32_t height = source->pixel_rows();
  if (!CanHoldRows(format, source->width(), height, stride)) return 0;

  const size_t width = static_cast<size_t>(source->width());
  std::optional<Lookup> lookup;
  if (source->indexed()) lookup.emplace(*source, format);
  std::optional<HighColor> high_color;
  if (high) high_color.emplace(*source);
  const RowStream result(stride > 0, source->extent(),
                         BytesOfPixels(format, source->width(), height));
  // From the image's first row in memory to its last: reading backwards takes twice as long.
  for (int32_t y = height - 1; y >= 0; --y) {
    const uint8_t* row = source->row(height - 1 - y);
    uint8_t* to = static_cast<uint8_t*>(pixels) + ptrdiff_t{y} * stride;
    result.Write(to, width, BitsOfFormat(format), [&](size_t first, size_t count, uint8_t* some) {
      const uint8_t* const from = row + first * bits / 8;
      if (lookup) {
        lookup->WriteRow(from, count, some);
      } else if (high_color) {
        WriteHighColors(*high_color, bits, format, from, count, some);
      } else {
        WriteBgr(format, from, count, some);
      }
    });
  }
  return 1;
}
