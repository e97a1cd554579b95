// omb_bestfit: the smooth curve through points, and omb_curve, which applies it.
//
// The pieces are cubic and monotone: M. Steffen, "A simple method for monotonic interpolation in
// one dimension", Astronomy and Astrophysics 239 (1990). Wherever the method divides, numerator and
// denominator are whole numbers that double precision holds, so that each quotient is rounded once.
#include <algorithm>
#include <cmath>
#include <optional>

#include "tone/tone_curve.h"

namespace ombrilo {

namespace {

// From a point to the next.
struct Segment {
  double width, rise;
  double slope() const { return rise / width; }
};

Segment SegmentFrom(const OmbPoint* point) {
  return {static_cast<double>(point[1].x - point[0].x),
          static_cast<double>(point[1].y - point[0].y)};
}

// The slope at the point between two segments: none at an extreme, otherwise that of the parabola
// through the three points, at most twice the smaller of the segments' slopes.
double InnerSlope(const Segment& left, const Segment& right) {
  if (left.rise * right.rise <= 0) return 0;
  const double slope =
      (left.rise * right.width * right.width + right.rise * left.width * left.width) /
      (left.width * right.width * (left.width + right.width));
  const double limit = 2 * std::min(std::fabs(left.slope()), std::fabs(right.slope()));
  return std::clamp(slope, -limit, limit);
}

// The slope at an end, by its segment and the next one.
double EndSlope(const Segment& own, const Segment& next) {
  const double slope =
      (own.rise * next.width * (2 * own.width + next.width) - next.rise * own.width * own.width) /
      (own.width * next.width * (own.width + next.width));
  if (slope * own.rise <= 0) return 0;
  const double limit = 2 * std::fabs(own.slope());
  return std::clamp(slope, -limit, limit);
}

double SlopeAt(const OmbPoint* points, uint32_t count, uint32_t i) {
  if (count == 2) return SegmentFrom(points).slope();
  const uint32_t last = count - 1;
  if (i == 0) return EndSlope(SegmentFrom(points), SegmentFrom(points + 1));
  if (i == last) return EndSlope(SegmentFrom(points + last - 1), SegmentFrom(points + last - 2));
  return InnerSlope(SegmentFrom(points + i - 1), SegmentFrom(points + i));
}

// The curve from a point to the next.
class Piece {
 public:
  Piece(const OmbPoint* points, uint32_t count, uint32_t i)
      : from_(points[i]),
        own_(SegmentFrom(points + i)),
        bend_at_start_(SlopeAt(points, count, i) - own_.slope()),
        bend_at_end_(SlopeAt(points, count, i + 1) - own_.slope()) {}

  uint8_t Level(int32_t v) const {
    const double from_left = v - from_.x, to_right = own_.width - from_left;
    const double bend = bend_at_start_ * to_right - bend_at_end_ * from_left;
    const double level = from_.y + own_.rise * from_left / own_.width +
                         from_left * to_right * bend / (own_.width * own_.width);
    return static_cast<uint8_t>(std::clamp(static_cast<int>(level + 0.5), 0, 255));
  }

 private:
  OmbPoint from_;
  Segment own_;
  double bend_at_start_, bend_at_end_;
};

}  // namespace

}  // namespace ombrilo

uint32_t omb_bestfit(const OmbPoint* points, uint32_t count, uint8_t* curve) {
  using namespace ombrilo;
  if (!AreCurvePoints(points, count) || curve == nullptr) return 0;
  uint32_t made = count;
  std::optional<Piece> piece;  // from point `made` on
  FillCurve(points, count, curve, [&](uint32_t i, int32_t v) {
    if (made != i) {
      piece.emplace(points, count, i);
      made = i;
    }
    return piece->Level(v);
  });
  return 1;
}

uint32_t omb_curve(PackedDib* image, const OmbPoint* points, uint32_t count, uint32_t channel) {
  uint8_t curve[256];
  return omb_bestfit(points, count, curve) != 0 ? ombrilo::ApplyCurve(image, curve, channel) : 0;
}
