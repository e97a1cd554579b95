// omb_segmentoperation: a tone curve of straight segments.
#include "tone/tone_curve.h"

uint32_t omb_segmentoperation(PackedDib* image, const OmbPoint* points, uint32_t count,
                              uint32_t channel) {
  using namespace ombrilo;
  if (!AreCurvePoints(points, count)) return 0;
  uint8_t curve[256];
  FillCurve(points, count, curve, [=](uint32_t i, int32_t v) {
    const OmbPoint from = points[i], to = points[i + 1];
    const int32_t width = to.x - from.x;
    const int32_t level = from.y * width + (v - from.x) * (to.y - from.y);  // times the width
    return static_cast<uint8_t>((2 * level + width) / (2 * width));
  });
  return ApplyCurve(image, curve, channel);
}
