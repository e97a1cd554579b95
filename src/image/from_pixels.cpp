// omb_frompixels: an image made of a host's pixels.
#include <cstring>

#include "core/pixels.h"
#include "core/read_ahead.h"
#include "core/replacement.h"
#include "image/host_pixels.h"
#include "image/row_stream.h"
#include "rows/row_functions.h"

namespace ombrilo {

namespace {

void ReadRow(uint32_t format, const uint8_t* from, size_t pixels, const uint8_t* background,
             uint8_t* to) {
  const simd::RowFunctions& rows = simd::Active();
  switch (format) {
    case OMB_PIXELS_BIT:
      CopyPixels(from, 1, 0, pixels, to);
      break;
    case OMB_PIXELS_GRAY:
      std::memcpy(to, from, pixels);
      break;
    case OMB_PIXELS_BGR:
      std::memcpy(to, from, 3 * pixels);
      break;
    case OMB_PIXELS_RGB:
      rows.swap_red_blue(from, pixels, to);
      break;
    case OMB_PIXELS_BGRA:
    case OMB_PIXELS_RGBA:
      rows.blend_over(from, pixels, IsRedFirst(format), background, to);
      break;
  }
}

}  // namespace

}  // namespace ombrilo

PackedDib* omb_frompixels(uint32_t format, int32_t width, int32_t height, const void* pixels,
                          intptr_t stride, uint32_t background) {
  using namespace ombrilo;
  if (pixels == nullptr || width < 1 || height < 1) return nullptr;
  if (!CanHoldRows(format, width, height, stride)) return nullptr;
  const uint16_t bits = BitsOfFormat(format);
  NewBlock block =
      NewBlock::Fresh(width, height, bits == 32 ? 24 : bits, NewBlock::Rows::kPixelsComeNext);
  if (!block) return nullptr;
  const uint8_t bgr[] = {static_cast<uint8_t>(background >> 16),
                         static_cast<uint8_t>(background >> 8), static_cast<uint8_t>(background)};
  const Dib dib = block.dib();
  const auto* top = static_cast<const uint8_t*>(pixels);
  // The host's rows in the order of their memory: reading backwards takes twice as long.
  const auto row = [=](int32_t i) { return dib.row(stride < 0 ? i : height - 1 - i); };
  const RowStream result(stride > 0, BytesOfPixels(format, width, height), block.size());
  for (int32_t i = 0; i < height; ++i) {
    const int32_t y = stride < 0 ? height - 1 - i : i;
    const uint8_t* const from = top + ptrdiff_t{y} * stride;
    if (!result.streams() && i + 1 < height)
      ReadAhead(row(i + 1), dib.stride());  // to be written next
    result.Write(row(i), static_cast<size_t>(width), dib.bit_count(),
                 [&](size_t first, size_t count, uint8_t* to) {
                   ReadRow(format, from + first * bits / 8, count, bgr, to);
                 });
  }
  return block.Release();
}
