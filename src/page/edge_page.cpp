// omb_EdgePage: a choice of edge filters for page images, and the two gradient magnitudes of them.
#include "core/neighbourhood.h"
#include "morphology/kernal.h"
#include "rows/row_functions.h"

namespace ombrilo {

namespace {

enum Mode {
  kSobelMode = 0,
  kRobertsMode = 1,
  kSculptMode = 2,
  kLaplaceMode = 3,
  kHorizontalMode = 5,
  kVerticalMode = 6,
};

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
int32_t omb_EdgePage(PackedDib* image, int32_t size, int32_t p3, int32_t p4, int32_t mode, ...) {
  using namespace ombrilo;
  const auto convolute = [&](int32_t kernal) {
    return omb_DoConvoluteDIB(image, &kKernals[kernal], p3, p4);
  };
  switch (mode) {
    case kSobelMode:
      return ReplaceByMagnitude<SobelMagnitude>(image);
    case kRobertsMode:
      return ReplaceByMagnitude<RobertsMagnitude>(image);
    case kSculptMode:  // whatever the size
      return convolute(kSculpt);
  }
  if (size < 0 || size > 2) return 0;
  switch (mode) {
    case kLaplaceMode:
      return convolute(kLaplace3x3 + size);
    case kHorizontalMode:
      return convolute(kHorzedge3x3 + size);
    case kVerticalMode:
      return convolute(kVertedge3x3 + size);
    default:
      return 0;
  }
}
