// omb_EnhancePage: a choice of filters for page images.
#include "morphology/kernal.h"
#include "page/rank_order.h"
#include "page/tone.h"

namespace ombrilo {

namespace {

// The convolutions; null for other modes. `size` is 0 to 2.
const KERNAL* KernalOf(int32_t mode, int32_t size) {
  static constexpr const KERNAL* kGauss3[] = {&kGauss3x3, &kGauss5x5, &kGauss7x7};
  switch (mode) {
    case OMB_ENHANCE_LOPASS:
      return &kKernals[OMB_KERNAL_LOPASS_3X3 + size];
    case OMB_ENHANCE_HIPASS:
      return &kKernals[OMB_KERNAL_HIPASS_3X3 + size];
    case OMB_ENHANCE_GAUSS:
      return kGauss3[size];
    case OMB_ENHANCE_HIGAUSS:  // one size larger than in the other modes
      return &kKernals[OMB_KERNAL_HIGAUSS_5X5 + size];
    case OMB_ENHANCE_TONE:  // reached where toneScope names no tone routine
    case OMB_ENHANCE_UNSHARP:
      return &kKernals[OMB_KERNAL_UNSHARP_3X3 + size];
    default:
      return nullptr;
  }
}

}  // namespace

}  // namespace ombrilo

int32_t omb_EnhancePage(PackedDib* image, int32_t size, int32_t passes, int32_t strength,
                        int32_t block, int32_t percentile, int32_t mode, int32_t toneScope,
                        int32_t toneCurve) {
  using namespace ombrilo;
  if (mode == OMB_ENHANCE_TONE && toneScope == OMB_SCOPE_IMAGE) {
    return EnhanceTone(image, toneCurve, size, passes, strength);
  }
  if (mode == OMB_ENHANCE_TONE && toneScope == OMB_SCOPE_BLOCKS) {
    return EnhanceToneByBlocks(image, toneCurve, block, passes, strength);
  }
  if (size < 0 || size > 2) return 0;
  if (mode == OMB_ENHANCE_MEDIAN) return RankOrder(image, size + 1, passes, 50);
  if (mode == OMB_ENHANCE_RANK) return RankOrder(image, size + 1, passes, percentile);
  const KERNAL* kernal = KernalOf(mode, size);
  return kernal == nullptr ? 0 : omb_DoConvoluteDIB(image, kernal, passes, strength);
}
