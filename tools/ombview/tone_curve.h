// Tone curves as a person draws them: points on a square of 256 x 256 levels. Portable.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "steps/steps.h"

namespace ombview {

struct CurvePoint {
  int x, y;  // a level and what becomes of it
  bool operator==(const CurvePoint&) const = default;
};

// At least two points, from left to right, no two at the same level.
class CurvePoints {
 public:
  // "0:0/128:160/255:255"; none when it is not understood.
  static std::optional<CurvePoints> Parse(const std::string& text);
  std::string Text() const;

  const std::vector<CurvePoint>& points() const { return points_; }
  // The point within `reach` levels of a place; none if there is none so near.
  std::optional<size_t> Near(CurvePoint place, int reach) const;
  // Adds a point, or moves the one that is at this level already. Returns its index.
  size_t Put(CurvePoint place);
  // It stays between its neighbours.
  void Move(size_t point, CurvePoint place);
  // Does nothing when only two points are left.
  void Remove(size_t point);

 private:
  std::vector<CurvePoint> points_;
};

// What a step makes of each gray level. Throws StepError and std::bad_alloc.
std::array<uint8_t, 256> CurveOf(const omb::Call& call);

}  // namespace ombview
