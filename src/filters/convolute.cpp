// omb_convolute and omb_emboss: convolution with the numbered kernels.
#include <utility>

#include "core/neighbourhood.h"
#include "filters/convolver.h"
#include "filters/numbered_kernels.h"

namespace ombrilo {

namespace {

// Applies a kernel to the whole image, with a zeroed band half as wide as the kernel. `color`,
// 0x00BBGGRR, is added to each result. False when memory runs out.
bool Convolute(const Dib& dib, const NumberedKernel& kernel, uint32_t color) {
  if (!dib.indexed() && dib.bit_count() != 24) {
    ZeroPixels(dib);
    return true;
  }
  const int32_t half = kernel.half;
  const int32_t size = 2 * half + 1;
  Buffer<Tap> taps = NewScratchBuffer<Tap>(25);
  if (!taps) return false;
  Finishing finishing = {.divisor = 0};
  for (int32_t i = 0; i < size * size; ++i) {
    taps[i] = {i % size - half, i / size - half, kernel.weights[i]};
    finishing.divisor += kernel.weights[i];
  }
  for (int c = 0; c < 3; ++c) finishing.color[c] = static_cast<uint8_t>(color >> (16 - 8 * c));
  Convolver convolver(std::move(taps), static_cast<size_t>(size * size), finishing);
  if (!convolver) return false;
  Neighbourhood frame(dib, convolver.reach(), convolver.memory());
  if (!frame) return false;
  const bool gray =
      finishing.color[0] == finishing.color[1] && finishing.color[1] == finishing.color[2];
  if (!gray && !frame.SplitChannels()) return false;
  frame.Run(Pass{convolver.reach(), Border::Zero(half), &convolver});
  return true;
}

}  // namespace

}  // namespace ombrilo

void omb_convolute(PackedDib* image, uint32_t type) {
  using namespace ombrilo;
  const auto dib = Dib::Open(image);
  if (!dib || type < 1 || type > kNumberedKernels) return;
  Convolute(*dib, kNumberedKernel[type - 1], 0);
}

uint32_t omb_emboss(PackedDib* image, uint32_t direction, uint32_t color) {
  using namespace ombrilo;
  const auto dib = Dib::Open(image);
  if (!dib || direction > kNumberedKernels - kFirstEmbossKernel) return 0;
  return Convolute(*dib, kNumberedKernel[kFirstEmbossKernel + direction - 1], color);
}
