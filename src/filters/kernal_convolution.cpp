// omb_DoConvoluteDIB: convolution with a KERNAL record.
#include <algorithm>
#include <utility>

#include "core/neighbourhood.h"
#include "filters/convolver.h"

namespace ombrilo {

namespace {

// Whether the offsets lie in the box that width, height and anchors describe, so that no pixel of
// the computed area has a neighbour outside the image.
bool InItsBox(const KERNAL& kernel) {
  const int64_t left = -int64_t{kernel.anchorX}, right = left + kernel.width - 1;
  const int64_t high = kernel.anchorY, low = high + 1 - kernel.height;
  for (int32_t i = 0; i < kernel.count; ++i) {
    const int32_t dx = kernel.offsets[2 * size_t(i)], dy = kernel.offsets[2 * size_t(i) + 1];
    if (dx < left || dx > right || dy < low || dy > high) return false;
  }
  return true;
}

int32_t Convolute(const Dib& dib, const KERNAL& kernel, int32_t passes, int32_t strength) {
  // The row length follows from all 32 bits of the width, unlike the width that is walked.
  const PixelRows rows =
      PixelRows::WithPlanes(dib, dib.ReadU32(kInfoWidth), dib.header().bit_count);
  if (rows.bit_count != 8 && rows.bit_count != 24) return 1;
  if (PixelRows::WithoutPlanes(dib)) return 1;
  if (!rows.Fits(dib)) return 0;
  if (passes < 1) return 1;

  const auto within = [](int64_t band, int32_t size) {
    return static_cast<int32_t>(std::clamp<int64_t>(band, 0, size));
  };
  const Reach band = {within(int64_t{kernel.height} - 1 - kernel.anchorY, rows.height),
                      within(kernel.anchorY, rows.height), within(kernel.anchorX, rows.width),
                      within(int64_t{kernel.width} - 1 - kernel.anchorX, rows.width)};
  if (int64_t{band.before} + band.after >= rows.height) return 1;
  if (int64_t{band.left} + band.right >= rows.width) return 1;

  const size_t count = kernel.count < 0 ? 0 : static_cast<size_t>(kernel.count);
  Buffer<Tap> taps = NewScratchBuffer<Tap>(count);
  if (!taps) return 0;
  uint32_t divisor = 0;
  for (size_t i = 0; i < count; ++i) {
    taps[i] = {kernel.offsets[2 * i], kernel.offsets[2 * i + 1], kernel.weights[i]};
    divisor += static_cast<uint32_t>(kernel.weights[i]);
  }
  Convolver convolver(
      std::move(taps), count,
      {.divisor = static_cast<int32_t>(divisor), .strength = strength, .bias = kernel.bias});
  if (!convolver) return 0;
  Neighbourhood frame(rows, convolver.reach(), convolver.memory());
  if (!frame) return 0;
  frame.Repeat(passes, Pass{convolver.reach(), Border::Keep(band), &convolver});
  return 1;
}

}  // namespace

}  // namespace ombrilo

int32_t omb_DoConvoluteDIB(PackedDib* image, const KERNAL* kernel, int32_t passes,
                           int32_t strength) {
  using namespace ombrilo;
  const auto dib = Dib::Open(image);
  if (!dib || kernel == nullptr) return 0;
  const bool complete = kernel->offsets != nullptr && kernel->weights != nullptr;
  if ((kernel->count > 0 && !complete) || !InItsBox(*kernel)) return 0;
  return Convolute(*dib, *kernel, passes, strength);
}
