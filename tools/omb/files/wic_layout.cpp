#include "files/wic_layout.h"

#include <wincodec.h>

#include <algorithm>
#include <cstring>

#include "core/bytes.h"
#include "files/pixels_in.h"

namespace omb {

using namespace ombrilo;

namespace {

template <size_t kBits>
bool CopyBits(const uint8_t* from, size_t pixels, uint8_t* to) {
  std::memcpy(to, from, (pixels * kBits + 7) / 8);
  return false;
}

bool ExpandPairs(const uint8_t* from, size_t pixels, uint8_t* to) {
  ExpandTwoBits(from, pixels, to);
  return false;
}

// Samples of 8 or 16 bits in the order of `kRed`, `kGreen`, `kBlue` among `kSamples`, the last of
// which is alpha where there are more than three.
template <size_t kSamples, size_t kBytes, size_t kRed>
bool Colors(const uint8_t* from, size_t pixels, uint8_t* to) {
  bool transparent = false;
  const auto sample = [&](size_t i) -> unsigned {
    return kBytes == 1 ? from[i] : ReduceSample(LoadU16(from + 2 * i));
  };
  for (size_t x = 0; x < pixels; ++x, from += kSamples * kBytes, to += 3) {
    const unsigned alpha = kSamples > 3 ? sample(kSamples - 1) : 255;
    transparent = transparent || alpha != 255;
    to[0] = OnWhite(sample(2 - kRed), alpha);
    to[1] = OnWhite(sample(1), alpha);
    to[2] = OnWhite(sample(kRed), alpha);
  }
  return transparent;
}

bool ReduceGray(const uint8_t* from, size_t pixels, uint8_t* to) {
  for (size_t x = 0; x < pixels; ++x) to[x] = ReduceSample(LoadU16(from + 2 * x));
  return false;
}

// To the codecs 0 is no ink, whatever the file says.
bool Inks(const uint8_t* from, size_t pixels, uint8_t* to) {
  for (size_t x = 0; x < pixels; ++x, from += 4, to += 3) {
    for (size_t c = 0; c < 3; ++c) {
      to[2 - c] = ThroughInks(255u - from[c], 255u - from[3]);
    }
  }
  return false;
}

const WicLayout kLayouts[] = {
    {GUID_WICPixelFormatBlackWhite, 1, 1, CopyBits<1>, 2},
    {GUID_WICPixelFormat1bppIndexed, 1, 1, CopyBits<1>, 0},
    {GUID_WICPixelFormat2bppGray, 2, 4, ExpandPairs, 4},
    {GUID_WICPixelFormat2bppIndexed, 2, 4, ExpandPairs, 0},
    {GUID_WICPixelFormat4bppGray, 4, 4, CopyBits<4>, 16},
    {GUID_WICPixelFormat4bppIndexed, 4, 4, CopyBits<4>, 0},
    {GUID_WICPixelFormat8bppGray, 8, 8, CopyBits<8>, 256},
    {GUID_WICPixelFormat8bppIndexed, 8, 8, CopyBits<8>, 0},
    {GUID_WICPixelFormat16bppGray, 16, 8, ReduceGray, 256},
    {GUID_WICPixelFormat24bppBGR, 24, 24, CopyBits<24>, 0},
    {GUID_WICPixelFormat24bppRGB, 24, 24, Colors<3, 1, 0>, 0},
    {GUID_WICPixelFormat48bppRGB, 48, 24, Colors<3, 2, 0>, 0},
    {GUID_WICPixelFormat64bppRGBA, 64, 24, Colors<4, 2, 0>, 0},
    {GUID_WICPixelFormat32bppCMYK, 32, 24, Inks, 0},
    // Last: what all others are converted to.
    {GUID_WICPixelFormat32bppBGRA, 32, 24, Colors<4, 1, 2>, 0},
};

}  // namespace

const WicLayout& LayoutFor(const GUID& format) {
  const auto found = std::ranges::find_if(
      kLayouts, [&](const WicLayout& layout) { return layout.format == format; });
  return found == std::end(kLayouts) ? *std::prev(found) : *found;
}

}  // namespace omb
