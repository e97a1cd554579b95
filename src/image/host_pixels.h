// The pixel arrays of omb_frompixels and omb_topixels: rows from the top down, in one of the
// layouts of OmbPixels.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

#include "ombrilo/ombrilo.h"

namespace ombrilo {

// Bits per pixel; 0 for an unknown format.
constexpr uint16_t BitsOfFormat(uint32_t format) {
  switch (format) {
    case OMB_PIXELS_BIT:
      return 1;
    case OMB_PIXELS_GRAY:
      return 8;
    case OMB_PIXELS_BGR:
    case OMB_PIXELS_RGB:
      return 24;
    case OMB_PIXELS_BGRA:
    case OMB_PIXELS_RGBA:
      return 32;
    default:
      return 0;
  }
}

constexpr bool IsRedFirst(uint32_t format) {
  return format == OMB_PIXELS_RGB || format == OMB_PIXELS_RGBA;
}

// Of valid sizes, without what is between rows.
constexpr uint64_t BytesOfPixels(uint32_t format, int32_t width, int32_t height) {
  return uint64_t{BitsOfFormat(format)} * static_cast<uint32_t>(width) *
         static_cast<uint32_t>(height) / 8;
}

// Whether rows of this format can be `stride` bytes apart, in either direction, without overlapping
// and without exceeding the address space.
constexpr bool CanHoldRows(uint32_t format, int32_t width, int32_t height, intptr_t stride) {
  const uint64_t row = (uint64_t{BitsOfFormat(format)} * static_cast<uint32_t>(width) + 7) / 8;
  const uint64_t apart = stride < 0 ? uint64_t{0} - static_cast<uint64_t>(int64_t{stride})
                                    : static_cast<uint64_t>(stride);
  constexpr uint64_t kMost = std::numeric_limits<ptrdiff_t>::max();
  return BitsOfFormat(format) != 0 && apart >= row &&
         apart <= kMost / static_cast<uint32_t>(height);
}

}  // namespace ombrilo
