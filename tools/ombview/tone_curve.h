// Tone curves as a person draws them: points on a square of 256 x 256 levels. It knows no windows.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "steps/steps.h"

namespace ombview {

struct CurvePoint {
  int x, y;  // a level before and behind
  bool operator==(const CurvePoint&) const = default;
};

// At least two points, from left to right, no two at the same level.
class CurvePoints {
 public:
  // "0:0/128:160/255:255"; none when it is not understood.
  static std::optional<CurvePoints> Parse(const std::string& text);
  std::string Text() const;

  const std::vector<CurvePoint>& points() const { return points_; }
  // The point within `reach` levels of a place; none beside all of them.
  std::optional<size_t> Near(CurvePoint place, int reach) const;
  // A new point, or the one that stands at this level already, moved there.
  size_t Put(CurvePoint place);
  // Between its neighbours.
  void Move(size_t point, CurvePoint place);
  // Two points stay.
  void Remove(size_t point);

 private:
  std::vector<CurvePoint> points_;
};

// What a step makes of each gray level. Throws StepError and std::bad_alloc.
std::array<uint8_t, 256> CurveOf(const omb::Call& call);

}  // namespace ombview
