#include "files/pixels_in.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/bytes.h"
#include "core/color_table.h"
#include "core/replacement.h"

namespace omb {

using namespace ombrilo;

namespace {

constexpr int64_t kMaxSide = 1'000'000;
constexpr int64_t kMaxCompressedPixels = int64_t{1} << 30;

[[noreturn]] void TooLarge(const ImageSize& size) {
  throw FileError("an image of " + PixelsText(size) + " at " + std::to_string(size.bit_count) +
                  " bits is too large");
}

}  // namespace

int32_t DotsPerMeter(double dots, double meters) {
  const double result = std::round(dots / meters);
  return result >= 1 && result <= std::numeric_limits<int32_t>::max() ? static_cast<int32_t>(result)
                                                                      : 0;
}

Resolution ResolutionIn(uint32_t unit, double x, double y) {
  if (unit != 2 && unit != 3) return {};
  const double length = unit == 2 ? kInch : 0.01;
  return {DotsPerMeter(x, length), DotsPerMeter(y, length)};
}

std::string PixelsText(const ImageSize& size) {
  return std::to_string(size.width) + " x " + std::to_string(size.height) + " pixels";
}

void CheckSize(const ImageSize& size) {
  if (size.width < 1 || size.height < 1) throw FileError("the image has no pixels");
  if (size.width > kMaxSide || size.height > kMaxSide) TooLarge(size);
  // Room is left for the largest header and color table.
  const int64_t limit = std::numeric_limits<int32_t>::max() - 2048;
  if (StrideOf(size.width, size.bit_count) * size.height > limit) TooLarge(size);
}

void CheckCompressedSize(const ImageSize& size) {
  CheckSize(size);
  if (size.width * size.height > kMaxCompressedPixels) TooLarge(size);
}

Image NewImage(const ImageSize& size, Resolution resolution, const Masks* masks) {
  CheckSize(size);
  uint8_t fields[kInfoHeaderSize] = {};
  StoreU32(fields, kInfoHeaderSize);
  StoreU32(fields + kInfoWidth, static_cast<uint32_t>(size.width));
  StoreU32(fields + kInfoHeight, static_cast<uint32_t>(size.height));
  StoreU16(fields + kInfoPlanes, 1);
  StoreU16(fields + kInfoBitCount, size.bit_count);
  StoreU32(fields + kInfoXPelsPerMeter, static_cast<uint32_t>(resolution.x));
  StoreU32(fields + kInfoYPelsPerMeter, static_cast<uint32_t>(resolution.y));
  if (masks != nullptr) {
    StoreU32(fields + kInfoCompression, kBitfields);
    StoreU32(fields + kInfoClrUsed, 3);
  }
  NewBlock block = NewBlock::WithHeader(fields);
  if (!block) throw FileError("there is not enough memory for " + PixelsText(size));
  if (masks != nullptr) {
    StoreU32(block.bytes() + kInfoHeaderSize, masks->red);
    StoreU32(block.bytes() + kInfoHeaderSize + 4, masks->green);
    StoreU32(block.bytes() + kInfoHeaderSize + 8, masks->blue);
  }
  return Image(block.Release());
}

void SetColor(const Dib& dib, uint32_t index, uint8_t red, uint8_t green, uint8_t blue) {
  const uint8_t bgr[3] = {blue, green, red};
  WriteColors(dib, index, 1, bgr);
}

void SetGrayRamp(const Dib& dib, uint32_t count, bool white_first) {
  for (uint32_t i = 0; i < count; ++i) {
    const auto level = static_cast<uint8_t>(i * 255 / (count - 1));
    SetColor(dib, white_first ? count - 1 - i : i, level, level, level);
  }
}

Image Upright(Image image, int orientation) {
  PackedDib* dib = image.release();
  bool done = true;
  if (orientation >= 5 && orientation <= 8) {
    done = omb_rotate(&dib, orientation <= 6 ? 90.0f : 270.0f, 1) != 0;
    auto* fields = reinterpret_cast<uint8_t*>(dib);
    const uint32_t x = LoadU32(fields + kInfoXPelsPerMeter);
    StoreU32(fields + kInfoXPelsPerMeter, LoadU32(fields + kInfoYPelsPerMeter));
    StoreU32(fields + kInfoYPelsPerMeter, x);
  }
  const bool mirrored =
      orientation == 2 || orientation == 3 || orientation == 5 || orientation == 7;
  if (done && mirrored) done = omb_fliphor(dib) != 0;
  if (done && (orientation == 3 || orientation == 4)) done = omb_flipvert(dib) != 0;
  image.reset(dib);
  if (!done) throw FileError("there is not enough memory to turn the picture upright");
  return image;
}

void TurnUpright(PageInfo& info, int orientation) {
  if (orientation < 5 || orientation > 8) return;
  std::swap(info.width, info.height);
  std::swap(info.resolution.x, info.resolution.y);
}

void ExpandTwoBits(const uint8_t* from, size_t pixels, uint8_t* to) {
  // From the right, so that in place no pixel is overwritten before it is read.
  for (size_t i = (pixels + 1) / 2; i-- > 0;) {
    const int pair = from[i / 2] >> (i % 2 == 0 ? 4 : 0) & 15;
    to[i] = static_cast<uint8_t>((pair >> 2) << 4 | (pair & 3));
  }
}

}  // namespace omb
