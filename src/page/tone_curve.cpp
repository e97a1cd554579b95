#include "page/tone_curve.h"

#include <algorithm>

namespace ombrilo {

namespace {

// 163.3133 ln(v / 50), which is 0 at 50 and near 255 at 238. No value is nearer than 0.003 to the
// middle between two levels, so that any logarithm will do.
struct LogarithmTable {
  uint8_t level[256];

  constexpr LogarithmTable() : level() {
    for (int v = 51; v < 256; ++v) {
      const double x = v / 50.0, z = (x - 1) / (x + 1);
      double series = 0;  // of 2 atanh(z)
      for (int k = 81; k >= 1; k -= 2) series = 1.0 / k + z * z * series;
      const double value = 163.3133 * (2 * z * series) + 0.5;
      level[v] = static_cast<uint8_t>(value > 255 ? 255 : value);
    }
  }
};
constexpr LogarithmTable kLogarithms;

}  // namespace

void LevelCounts::Add(const LevelCounts& other) {
  for (int v = 0; v < 256; ++v) count[v] += other.count[v];
  all += other.all;
}

ToneLevels MeasureTone(const LevelCounts& levels, int32_t thousandths, int32_t reach) {
  ToneLevels found = {256, -1, 0};
  const uint64_t cut = levels.all * static_cast<uint64_t>(std::max(thousandths, 0)) / 1000;
  uint64_t below[257] = {}, weighted = 0;  // levels below each
  for (int v = 0; v < 256; ++v) {
    below[v + 1] = below[v] + levels.count[v];
    weighted += static_cast<uint64_t>(v) * levels.count[v];
    if (below[v + 1] > cut && found.low == 256) found.low = static_cast<int16_t>(v);
    if (levels.all - below[v] > cut) found.high = static_cast<int16_t>(v);
  }
  const int k = std::clamp(reach, 0, 255);
  uint64_t most = 0;
  for (int v = static_cast<int>(weighted / levels.all); v < 256; ++v) {
    const uint64_t near = below[std::min(v + k, 255) + 1] - below[std::max(v - k, 0)];
    if (near >= most) most = near, found.paper = static_cast<int16_t>(v);
  }
  return found;
}

void EqualiseCurve(const LevelCounts& levels, int32_t limit, uint8_t* curve) {
  uint64_t most = levels.all;
  if (limit > 0) {
    most = std::max<uint64_t>(1, levels.all * static_cast<uint64_t>(limit) / 25600);
  }
  uint64_t excess = 0;
  for (const uint64_t count : levels.count) excess += count - std::min(count, most);
  uint64_t first = 0, sum = 0;  // first sum above 0
  for (uint64_t v = 0; v < 256; ++v) {
    sum += std::min(levels.count[v], most);
    const uint64_t c = sum + excess * (v + 1) / 256;
    if (first == 0) first = c;
    const uint64_t range = levels.all - first;
    if (c == 0) {
      curve[v] = 0;
    } else {
      curve[v] = static_cast<uint8_t>(range == 0 ? v : ((c - first) * 255 + range / 2) / range);
    }
  }
  if (first == levels.all) StretchCurve(0, 0, curve);  // a single level: nothing to spread
}

void StretchCurve(int32_t low, int32_t high, uint8_t* curve) {
  const int32_t range = high - low;
  for (int32_t v = 0; v < 256; ++v) {
    const int32_t spread = range <= 0  ? v
                           : v <= low  ? 0
                           : v >= high ? 255
                                       : (510 * (v - low) + range) / (2 * range);
    curve[v] = static_cast<uint8_t>(spread);
  }
}

void WhitenCurve(int32_t low, int32_t paper, uint8_t* curve) {
  StretchCurve(std::min(low, paper / 2), paper - paper / 8, curve);
}

void LogarithmCurve(int32_t paper, uint8_t* curve) {
  for (int32_t v = 0; v < 256; ++v) curve[v] = kLogarithms.level[std::min(255, v * 255 / paper)];
}

void BlendCurve(int32_t percent, uint8_t* curve) {
  for (int32_t v = 0; v < 256; ++v) {
    curve[v] = static_cast<uint8_t>(v + (curve[v] - v) * percent / 100);
  }
}

}  // namespace ombrilo
