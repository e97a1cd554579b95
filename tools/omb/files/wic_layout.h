// The pixels that the codecs of Windows give, and how they become those of an image.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>

namespace omb {

struct WicLayout {
  const GUID& format;
  uint16_t stored_bits;
  uint16_t bits;
  // True when a pixel was transparent.
  bool (*convert)(const uint8_t* from, size_t pixels, uint8_t* to);
  uint32_t grays;  // in the color table; 0 where the file has one, or the pixels are colors
};

// How a format of a codec is read: another format that it is to be converted to where it is
// unknown.
const WicLayout& LayoutFor(const GUID& format);

}  // namespace omb
