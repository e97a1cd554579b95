// omb_EdgePage: a choice of edge filters for page images, and the two gradient magnitudes of them.
#include "core/neighbourhood.h"
#include "morphology/kernal.h"
#include "rows/row_functions.h"

namespace ombrilo {

namespace {

class GradientBase {
 public:
  void Begin(const WindowLayout& layout) { step_ = layout.step; }
  void Prepare(uint8_t*) {}

 protected:
  ptrdiff_t step_ = 0;
};

struct SobelMagnitude : GradientBase {
  static constexpr Reach kReach = {1, 1, 1, 1};
  void Combine(uint8_t* const* rows, size_t first, size_t count, uint8_t* to) {
    const uint8_t* from[] = {rows[0] + first, rows[1] + first, rows[2] + first};
    simd::Active().sobel_magnitude(from, step_, count, to);
  }
};

// The pixel, the one to its right, and the two before them in storage.
struct RobertsMagnitude : GradientBase {
  static constexpr Reach kReach = {1, 0, 0, 1};
  void Combine(uint8_t* const* rows, size_t first, size_t count, uint8_t* to) {
    simd::Active().roberts_magnitude(rows[0] + first, rows[1] + first, step_, count, to);
  }
};

// Pixels whose neighbours are not all in the image stay as they are. Depths other than 8 and 24
// bits are left alone.
template <class Filter>
int32_t ReplaceByMagnitude(PackedDib* image) {
  const auto dib = Dib::Open(image);
  if (!dib) return 0;
  if (dib->bit_count() != 8 && dib->bit_count() != 24) return 1;
  constexpr Reach kReach = Filter::kReach;
  if (dib->width() <= kReach.left + kReach.right) return 1;
  if (dib->height() <= kReach.before + kReach.after) return 1;
  if (PixelRows::WithoutPlanes(*dib)) return 1;
  const int32_t stride = PixelRows::StrideWithPlanes(*dib, dib->ReadU32(kInfoWidth));
  if (stride < 0) return 0;
  const PixelRows rows = PixelRows::With(*dib, dib->width(), dib->height(),
                                         static_cast<size_t>(stride), dib->bit_count());
  if (!rows.Fits(*dib)) return 0;
  Neighbourhood frame(rows, kReach);
  if (!frame) return 0;
  Filter filter;
  frame.Run(Pass{kReach, Border::Keep(kReach), &filter});
  return 1;
}

}  // namespace

}  // namespace ombrilo

// Arguments after the mode have no effect.
int32_t omb_EdgePage(PackedDib* image, int32_t size, int32_t passes, int32_t strength, int32_t mode,
                     ...) {
  using namespace ombrilo;
  const auto convolute = [&](int32_t kernal) {
    return omb_DoConvoluteDIB(image, &kKernals[kernal], passes, strength);
  };
  switch (mode) {
    case OMB_EDGE_SOBEL:
      return ReplaceByMagnitude<SobelMagnitude>(image);
    case OMB_EDGE_ROBERTS:
      return ReplaceByMagnitude<RobertsMagnitude>(image);
    case OMB_EDGE_SCULPT:  // whatever the size
      return convolute(OMB_KERNAL_SCULPT);
  }
  if (size < 0 || size > 2) return 0;
  switch (mode) {
    case OMB_EDGE_LAPLACE:
      return convolute(OMB_KERNAL_LAPLACE_3X3 + size);
    case OMB_EDGE_HORIZONTAL:
      return convolute(OMB_KERNAL_HORZEDGE_3X3 + size);
    case OMB_EDGE_VERTICAL:
      return convolute(OMB_KERNAL_VERTEDGE_3X3 + size);
    default:
      return 0;
  }
}
