#include "tone_curve.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <new>

namespace ombview {

namespace {

constexpr int kTop = 255;

}  // namespace

std::optional<CurvePoints> CurvePoints::Parse(const std::string& text) {
  CurvePoints curve;
  for (const char* p = text.c_str();; ++p) {
    CurvePoint point;
    int used = 0;
    if (std::sscanf(p, "%d:%d%n", &point.x, &point.y, &used) != 2) return {};
    const bool fits = point.x >= 0 && point.x <= kTop && point.y >= 0 && point.y <= kTop;
    if (!fits || (!curve.points_.empty() && point.x <= curve.points_.back().x)) return {};
    curve.points_.push_back(point);
    p += used;
    if (*p == 0) break;
    if (*p != '/') return {};
  }
  if (curve.points_.size() < 2) return {};
  return curve;
}

std::string CurvePoints::Text() const {
  std::string text;
  for (const CurvePoint& point : points_) {
    text += (text.empty() ? "" : "/") + std::to_string(point.x) + ":" + std::to_string(point.y);
  }
  return text;
}

std::optional<size_t> CurvePoints::Near(CurvePoint place, int reach) const {
  std::optional<size_t> nearest;
  int least = reach + 1;
  for (size_t i = 0; i < points_.size(); ++i) {
    const int distance =
        std::max(std::abs(points_[i].x - place.x), std::abs(points_[i].y - place.y));
    if (distance < least) nearest = i, least = distance;
  }
  return nearest;
}

size_t CurvePoints::Put(CurvePoint place) {
  place = {std::clamp(place.x, 0, kTop), std::clamp(place.y, 0, kTop)};
  const auto at = std::lower_bound(points_.begin(), points_.end(), place,
                                   [](auto a, auto b) { return a.x < b.x; });
  const auto index = static_cast<size_t>(at - points_.begin());
  if (at != points_.end() && at->x == place.x) {
    *at = place;
  } else {
    points_.insert(at, place);
  }
  return index;
}

void CurvePoints::Move(size_t point, CurvePoint place) {
  const int least = point == 0 ? 0 : points_[point - 1].x + 1;
  const int most = point + 1 == points_.size() ? kTop : points_[point + 1].x - 1;
  points_[point] = {std::clamp(place.x, least, most), std::clamp(place.y, 0, kTop)};
}

void CurvePoints::Remove(size_t point) {
  if (points_.size() > 2) points_.erase(points_.begin() + static_cast<std::ptrdiff_t>(point));
}

std::array<uint8_t, 256> CurveOf(const omb::Call& call) {
  // The color table of a new image is a ramp from black to white.
  omb::Image ramp(omb_newdib(1, 1, 8));
  if (!ramp) throw std::bad_alloc();
  omb::RunCall(call, ramp);
  std::array<uint8_t, 256> curve;
  const uint8_t* table = omb_FindDIBBits(ramp.get()) - omb_PaletteSize(ramp.get());
  for (size_t i = 0; i < curve.size(); ++i) curve[i] = table[4 * i];
  return curve;
}

}  // namespace ombview
