// omb_EnhancePage: a choice of filters for page images.
#include "morphology/kernal.h"
#include "page/rank_order.h"
#include "page/tone.h"

namespace ombrilo {

namespace {

enum Mode {
  kLopass = 0,
  kHipass = 1,
  kGauss = 2,
  kHigauss = 3,
  kTone = 4,
  kUnsharp = 5,
  kMedian = 7,
  kRank = 8,
};

// The convolutions; null for other modes. `size` is 0 to 2.
const KERNAL* KernalOf(int32_t mode, int32_t size) {
  static constexpr const KERNAL* kGauss3[] = {&kGauss3x3, &kGauss5x5, &kGauss7x7};
  switch (mode) {
    case kLopass:
      return &kKernals[kLopass3x3 + size];
    case kHipass:
      return &kKernals[kHipass3x3 + size];
    case kGauss:
      return kGauss3[size];
    case kHigauss:  // one size larger than in the other modes
      return &kKernals[kHigauss5x5 + size];
    case kTone:  // reached where toneScope names no tone routine
    case kUnsharp:
      return &kKernals[kUnsharp3x3 + size];
    default:
      return nullptr;
  }
}

}  // namespace

}  // namespace ombrilo

int32_t omb_EnhancePage(PackedDib* image, int32_t size, int32_t p3, int32_t p4, int32_t p5,
                        int32_t p6, int32_t mode, int32_t toneScope, int32_t toneCurve) {
  using namespace ombrilo;
  if (mode == kTone && toneScope == 0) return EnhanceTone(image, toneCurve, size, p3, p4);
  if (mode == kTone && toneScope == 1) return EnhanceToneByBlocks(image, toneCurve, p5, p3, p4);
  if (size < 0 || size > 2) return 0;
  if (mode == kMedian) return RankOrder(image, size + 1, p3, 50);
  if (mode == kRank) return RankOrder(image, size + 1, p3, p6);
  const KERNAL* kernal = KernalOf(mode, size);
  return kernal == nullptr ? 0 : omb_DoConvoluteDIB(image, kernal, p3, p4);
}
